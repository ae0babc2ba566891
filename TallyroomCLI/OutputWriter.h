#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace tallyroom {

/// Collects text and writes it in pieces; remembers a failure.
class OutputWriter {
public:
    explicit OutputWriter(std::FILE* output) : m_output(output) {}

    void add(std::string_view text)
    {
        m_waiting += text;
        if (m_waiting.size() >= pieceSize) {
            write();
        }
    }

    /// False when `output` took not all; errno says why.
    [[nodiscard]] bool finish()
    {
        write();
        return m_isGood && std::fflush(m_output) == 0;
    }

private:
    static constexpr std::size_t pieceSize = 64 * 1024;

    void write()
    {
        m_isGood =
            m_isGood && std::fwrite(m_waiting.data(), 1, m_waiting.size(), m_output) == m_waiting.size();
        m_waiting.clear();
    }

    std::FILE* m_output;
    std::string m_waiting;
    bool m_isGood = true;
};

} // namespace tallyroom
