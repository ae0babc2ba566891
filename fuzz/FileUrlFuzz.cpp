// Paths and their percent-coding, whatever bytes names are made of.
#include "Model/FileUrl.h"
#include "Require.h"

#include <algorithm>

namespace {

using namespace tallyroom;

void checkPercentCoding(const std::string& path)
{
    const std::string encoded = percentEncodedPath(path);
    require(percentDecodedPath(encoded) == path, "decoding undoes encoding");
    require(std::ranges::all_of(encoded, [](char c) { return c > ' ' && c < '\x7f'; }), "encoded is ASCII");
    const std::string decoded = percentDecodedPath(path);
    require(decoded.size() <= path.size(), "decoding never lengthens");
    require(path.find('%') != std::string::npos || decoded == path, "decoding changes escapes alone");
}

void checkSteps(const FileUrl& url)
{
    const std::string& path = url.path();
    if (path.empty()) {
        return; // it leads nowhere
    }
    require(path.starts_with('/') && (path == "/" || !path.ends_with('/')), "one slash begins, none ends");
    require((path + "/").find("/./") == std::string::npos, "no step stays");
    require((path + "/").find("/../") == std::string::npos, "no step goes back");
    require(path.find("//") == std::string::npos, "no step is empty");
    require(url.standardized() == url, "standardizing once is enough");
    require(url.isInside(url.parent()) && url.isInside(FileUrl{"/"}), "a folder holds what is in it");
    if (path != "/") {
        require(url.parent().appending(url.lastPathComponent()) == url, "a folder and a name make a place");
        require(!url.parent().isInside(url), "nothing holds its own folder");
    }
    FileUrl rebuilt{"/"};
    for (const std::string& component : url.pathComponents()) {
        rebuilt = component == "/" ? rebuilt : rebuilt.appending(component);
    }
    require(rebuilt == url, "the components make the path");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = bytes(data, size);
    checkPercentCoding(path);
    checkSteps(FileUrl{path}.standardized());
    require(FileUrl{path}.lastPathComponent().ends_with(FileUrl{path}.pathExtension()), "a name has its end");
    return 0;
}
