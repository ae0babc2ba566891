#include "FileSystem/Digest.h"

#include "Model/Hexadecimal.h"

#include <new>
#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace tallyroom {

namespace {

/// Fetched once: the look-up by name costs more than a small file's digest. It lasts as long as the process,
/// and so does the library, since workers may still digest while the program leaves.
EVP_MD* sha256()
{
    static EVP_MD* const algorithm = [] {
        ::OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
        return ::EVP_MD_fetch(nullptr, "SHA256", nullptr);
    }();
    return algorithm;
}

} // namespace

std::string Digest::text() const
{
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        Hexadecimal::append(text, byte, Hexadecimal::lowerDigits);
    }
    return text;
}

/// libcrypto fails here only for lack of memory.
class Digester::Context {
public:
    Context() : m_context(::EVP_MD_CTX_new(), ::EVP_MD_CTX_free)
    {
        if (m_context == nullptr || sha256() == nullptr) {
            throw std::bad_alloc{};
        }
    }

    void begin() { require(::EVP_DigestInit_ex2(m_context.get(), sha256(), nullptr)); }

    void add(std::span<const std::byte> bytes)
    {
        require(::EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()));
    }

    Digest end()
    {
        Digest digest;
        require(::EVP_DigestFinal_ex(m_context.get(), digest.bytes.data(), nullptr));
        return digest;
    }

private:
    static void require(int result)
    {
        if (result != 1) {
            throw std::bad_alloc{};
        }
    }

    std::unique_ptr<EVP_MD_CTX, decltype(&::EVP_MD_CTX_free)> m_context;
};

Digester::Digester() : m_context(std::make_unique<Context>()) {}

Digester::~Digester() = default;

void Digester::begin()
{
    m_context->begin();
}

void Digester::add(std::span<const std::byte> bytes)
{
    m_context->add(bytes);
}

Digest Digester::end()
{
    return m_context->end();
}

Digest Digester::digest(std::span<const std::byte> bytes)
{
    begin();
    add(bytes);
    return end();
}

} // namespace tallyroom
