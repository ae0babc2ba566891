#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tallyroom {

/// A SHA-256 digest of some bytes.
struct Digest {
    std::array<std::uint8_t, 32> bytes{};

    /// 64 lowercase hexadecimal digits.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const Digest&, const Digest&) = default;
    friend std::strong_ordering operator<=>(const Digest&, const Digest&) = default;
};

/// Computes digests one after another with one context. One thread at a time.
class Digester {
public:
    Digester();
    Digester(const Digester&) = delete;
    Digester& operator=(const Digester&) = delete;
    ~Digester();

    /// Starts a new digest, even if the one before was not finished.
    void begin();

    void add(std::span<const std::byte> bytes);

    /// The digest of all that was added since `begin`.
    [[nodiscard]] Digest end();

    [[nodiscard]] Digest digest(std::span<const std::byte> bytes);

private:
    class Context;

    std::unique_ptr<Context> m_context;
};

} // namespace tallyroom
