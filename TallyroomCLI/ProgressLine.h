#pragma once

#include <chrono>
#include <cstdio>

namespace tallyroom {

/// One line on standard error that is written over and over, and gone at the end.
class ProgressLine {
public:
    explicit ProgressLine(bool isShown) : m_isShown(isShown) {}

    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    ~ProgressLine()
    {
        if (m_wasShown) {
            std::fputs("\r\033[K", stderr);
        }
    }

    /// Shows the text that `makeText` returns, at most every 100 ms.
    template <class MakeText>
    void show(MakeText makeText)
    {
        const auto now = std::chrono::steady_clock::now();
        if (!m_isShown || now - m_shownAt < interval) {
            return;
        }
        m_shownAt = now;
        m_wasShown = true;
        std::fprintf(stderr, "\r\033[K%s", makeText().c_str());
        std::fflush(stderr);
    }

private:
    static constexpr std::chrono::milliseconds interval{100};

    bool m_isShown;
    bool m_wasShown = false;
    std::chrono::steady_clock::time_point m_shownAt;
};

} // namespace tallyroom
