#pragma once

#include <array>
#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace tallyroom {

/// A SHA-256 digest of some bytes.
struct Digest {
    std::array<std::uint8_t, 32> bytes{};

    /// 64 lowercase hexadecimal digits.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const Digest&, const Digest&) = default;
    friend std::strong_ordering operator<=>(const Digest&, const Digest&) = default;
};

/// Which bytes of a file a digest covers.
struct FileSpan {
    std::int64_t offset = 0;
    std::int64_t length = 0;
};

/// Computes digests one after another with one context and one buffer. One thread at a time.
class Digester {
public:
    /// How much is read at once, and how much lies between two looks at a stop.
    static constexpr std::int64_t chunkSize = 1024L * 1024;

    Digester();
    Digester(const Digester&) = delete;
    Digester& operator=(const Digester&) = delete;
    ~Digester();

    [[nodiscard]] Digest digest(std::span<const std::byte> bytes);

    /// The digest of a span of an open file; absent when the file ends before the span does, cannot be read,
    /// or a stop came. Adds to `digestedBytes` as it goes.
    [[nodiscard]] std::optional<Digest> digest(int file, FileSpan span, const std::stop_token& stop,
                                               std::atomic<std::int64_t>& digestedBytes);

private:
    class Context;

    std::unique_ptr<Context> m_context;
    std::vector<std::byte> m_buffer;
};

} // namespace tallyroom
