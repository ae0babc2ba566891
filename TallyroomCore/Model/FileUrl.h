#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyroom {

/// An absolute location in the file system, kept as the bytes that the kernel knows: a name that is not
/// UTF-8 is never lost. A plain value without I/O; equality, order and hash go by the bytes. Any thread.
class FileUrl {
public:
    FileUrl() = default;

    /// Takes `path` as it is; a relative path is the caller's mistake and is kept as given.
    explicit FileUrl(std::string path) : m_path(std::move(path)) {}

    [[nodiscard]] const std::string& path() const noexcept { return m_path; }

    [[nodiscard]] bool isEmpty() const noexcept { return m_path.empty(); }

    /// The name after the last "/", trailing slashes ignored; "/" for the root, "" for an empty location.
    [[nodiscard]] std::string_view lastPathComponent() const noexcept;

    /// The bytes after the last "." of the last component; "" when there is no dot, when it is the first
    /// byte of the name (".profile") or when nothing follows it.
    [[nodiscard]] std::string_view pathExtension() const noexcept;

    /// "." and ".." steps, doubled and trailing slashes removed, by text alone: links are not resolved. An
    /// empty path, which leads nowhere, stays empty.
    [[nodiscard]] FileUrl standardized() const;

    /// The location of the child called `name`.
    [[nodiscard]] FileUrl appending(std::string_view name) const;

    /// The folder that holds this item; the root is its own parent.
    [[nodiscard]] FileUrl parent() const;

    /// The components of the standardized path, "/" first: "/a/b" gives "/", "a", "b".
    [[nodiscard]] std::vector<std::string> pathComponents() const;

    /// True when this location is `ancestor` or lies below it, by the standardized texts.
    [[nodiscard]] bool isInside(const FileUrl& ancestor) const;

    /// "file://" and the path, every byte but the unreserved ones and "/" as %XX (RFC 3986, RFC 8089).
    [[nodiscard]] std::string percentEncoded() const;

    friend bool operator==(const FileUrl&, const FileUrl&) = default;
    friend std::strong_ordering operator<=>(const FileUrl&, const FileUrl&) = default;

private:
    std::string m_path;
};

/// True when `path` is `ancestor` or lies below it, by the texts as they are.
[[nodiscard]] bool isWithin(std::string_view path, std::string_view ancestor) noexcept;

/// `FileUrl::pathExtension` of a bare name from a listing.
[[nodiscard]] std::string_view nameExtension(std::string_view name) noexcept;

/// Percent-encodes a path's bytes, "/" and the unreserved characters of RFC 3986 left as they are.
[[nodiscard]] std::string percentEncodedPath(std::string_view path);

/// Undoes percent-encoding byte by byte; a "%" that two hexadecimal digits do not follow stays as it is.
[[nodiscard]] std::string percentDecodedPath(std::string_view text);

} // namespace tallyroom

template <>
struct std::hash<tallyroom::FileUrl> {
    std::size_t operator()(const tallyroom::FileUrl& url) const noexcept
    {
        return std::hash<std::string>{}(url.path());
    }
};
