#pragma once

#include "Terminal.h"

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace tallyroom {

enum class OutputFormat : unsigned char { table, csv, json };

/// Collects text for standard output and writes it in pieces; remembers a failure.
class OutputWriter {
public:
    /// Adds text as it is.
    void add(std::string_view text)
    {
        m_waiting += text;
        if (m_waiting.size() >= pieceSize) {
            write();
        }
    }

    /// Adds a row of CSV. A file gets its bytes, and no line end after the last one; on a terminal they are
    /// printable, and the prompt comes on a line of its own.
    void addRow(std::string_view row)
    {
        if (m_hasRows) {
            add("\n");
        }
        m_hasRows = true;
        if (m_isTerminal) {
            add(Terminal::printable(row));
        } else {
            add(row);
        }
    }

    /// False when the output took not all; errno says why.
    [[nodiscard]] bool finish()
    {
        if (m_hasRows && m_isTerminal) {
            add("\n");
        }
        write();
        return m_isGood && std::fflush(stdout) == 0;
    }

private:
    static constexpr std::size_t pieceSize = 64 * 1024;

    void write()
    {
        m_isGood = m_isGood && std::fwrite(m_waiting.data(), 1, m_waiting.size(), stdout) == m_waiting.size();
        m_waiting.clear();
    }

    std::string m_waiting;
    bool m_isTerminal = Terminal::outputIsTerminal();
    bool m_hasRows = false;
    bool m_isGood = true;
};

} // namespace tallyroom
