// The yardstick of a search for duplicates, the walk aside: as many threads as are asked for read every file
// of a list once, from end to end, and digest it. Paths come on the standard input, a line each.
//
//     digest-floor [THREADS]

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <openssl/evp.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

struct EndDigest {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

/// Bytes read.
std::uint64_t digest(const std::string& path, EVP_MD_CTX* context, std::vector<unsigned char>& buffer)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOATIME);
    if (file < 0) {
        return 0;
    }
    EVP_DigestInit_ex(context, nullptr, nullptr);
    std::uint64_t bytes = 0;
    for (ssize_t got = 0; (got = ::read(file, buffer.data(), buffer.size())) > 0;) {
        EVP_DigestUpdate(context, buffer.data(), static_cast<std::size_t>(got));
        bytes += static_cast<std::uint64_t>(got);
        if (static_cast<std::size_t>(got) < buffer.size()) {
            break;
        }
    }
    unsigned char result[EVP_MAX_MD_SIZE];
    EVP_DigestFinal_ex(context, result, nullptr);
    ::close(file);
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    const int threads = argc > 1 ? std::atoi(argv[1]) : 8;
    std::vector<std::string> paths;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty()) {
            paths.push_back(line);
        }
    }
    const auto start = std::chrono::steady_clock::now();
    std::atomic<std::size_t> next = 0;
    std::atomic<std::uint64_t> bytes = 0;
    {
        std::vector<std::jthread> workers;
        for (int i = 0; i < threads; ++i) {
            workers.emplace_back([&] {
                const std::unique_ptr<EVP_MD_CTX, EndDigest> context{EVP_MD_CTX_new()};
                EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
                std::vector<unsigned char> buffer(bufferSize);
                for (std::size_t mine = next++; mine < paths.size(); mine = next++) {
                    bytes += digest(paths[mine], context.get(), buffer);
                }
            });
        }
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%zu files, %llu bytes, %.3f s\n", paths.size(), static_cast<unsigned long long>(bytes),
                took.count());
    return 0;
}
