#include "Model/FileUrl.h"

#include "Model/Hexadecimal.h"

#include <algorithm>

namespace tallyroom {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

/// Calls `visit` for every step of a path that is neither empty nor ".".
template <class Visit>
void forEachStep(std::string_view path, Visit visit)
{
    std::size_t start = 0;
    while (start < path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string_view step = path.substr(start, end - start);
        if (!step.empty() && step != ".") {
            visit(step);
        }
        start = end + 1;
    }
}

bool isUnreserved(unsigned char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

} // namespace

std::string_view FileUrl::lastPathComponent() const noexcept
{
    const std::string_view path = withoutTrailingSlashes(m_path);
    if (path == "/") {
        return path;
    }
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view FileUrl::pathExtension() const noexcept
{
    return nameExtension(lastPathComponent());
}

FileUrl FileUrl::standardized() const
{
    if (m_path.empty()) {
        return {};
    }
    std::string path;
    path.reserve(m_path.size());
    forEachStep(m_path, [&](std::string_view step) {
        if (step == "..") {
            path.resize(path.empty() ? 0 : path.rfind('/'));
        } else {
            path.append("/").append(step);
        }
    });
    return FileUrl{path.empty() ? "/" : std::move(path)};
}

FileUrl FileUrl::appending(std::string_view name) const
{
    std::string path;
    path.reserve(m_path.size() + 1 + name.size());
    path.append(m_path);
    if (!path.ends_with('/')) {
        path.push_back('/');
    }
    path.append(name);
    return FileUrl{std::move(path)};
}

FileUrl FileUrl::parent() const
{
    const std::string_view path = withoutTrailingSlashes(m_path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos || slash == 0) {
        return FileUrl{"/"};
    }
    return FileUrl{std::string{withoutTrailingSlashes(path.substr(0, slash))}};
}

std::vector<std::string> FileUrl::pathComponents() const
{
    std::vector<std::string> components{"/"};
    forEachStep(standardized().m_path, [&](std::string_view step) { components.emplace_back(step); });
    return components;
}

bool FileUrl::isInside(const FileUrl& ancestor) const
{
    const std::string own = standardized().m_path;
    const std::string other = ancestor.standardized().m_path;
    return own.empty() == other.empty() && isWithin(own, other);
}

std::string FileUrl::percentEncoded() const
{
    return "file://" + percentEncodedPath(m_path);
}

bool isWithin(std::string_view path, std::string_view ancestor) noexcept
{
    return path.starts_with(ancestor) &&
           (path.size() == ancestor.size() || ancestor.ends_with('/') || path[ancestor.size()] == '/');
}

std::string_view nameExtension(std::string_view name) noexcept
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view{} : name.substr(dot + 1);
}

std::string percentEncodedPath(std::string_view path)
{
    std::string text;
    text.reserve(path.size());
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (isUnreserved(byte) || byte == '/') {
            text.push_back(character);
        } else {
            text.push_back('%');
            Hexadecimal::append(text, byte, Hexadecimal::upperDigits);
        }
    }
    return text;
}

std::string percentDecodedPath(std::string_view text)
{
    std::string path;
    path.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = text[i] == '%' ? Hexadecimal::byteOf(text.substr(i + 1, 2)) : std::nullopt;
        if (byte) {
            path.push_back(*byte);
            i += 2;
        } else {
            path.push_back(text[i]);
        }
    }
    return path;
}

} // namespace tallyroom
