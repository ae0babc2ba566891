// A settings file that somebody has edited, or another version has written.
#include "Require.h"
#include "Settings/RecentFolders.h"
#include "Settings/Settings.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

using namespace tallyroom;

/// The settings file of a configuration folder of this run alone.
class SettingsFile {
public:
    SettingsFile()
    {
        std::filesystem::create_directories(m_path.parent_path());
        require(::setenv("XDG_CONFIG_HOME", m_folder.c_str(), 1) == 0, "the folder is set");
    }

    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    ~SettingsFile()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    void replace(const std::string& content)
    {
        std::ofstream{m_path, std::ios::binary} << content;
        // A file of the same time and size would not be read again.
        m_time += std::chrono::seconds{1};
        std::filesystem::last_write_time(m_path, m_time);
        Settings::store().sync();
    }

private:
    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("tallyroom-fuzz-" + std::to_string(::getpid()));
    std::filesystem::path m_path = m_folder / "tallyroom" / "tallyroom.json";
    std::filesystem::file_time_type m_time = std::filesystem::file_time_type::clock::now();
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static SettingsFile file;
    file.replace(bytes(data, size));
    const RecentFolders recent;
    require(
        std::ranges::all_of(recent.urls(), [](const FileUrl& url) { return url.path().starts_with('/'); }),
        "a recent folder is a place");
    for (const QString& key : Settings::store().allKeys()) {
        const auto whole = Settings::integer(key);
        require(!whole || Settings::truncatedNumber(key) == whole, "a whole number has no fraction");
        const auto text = Settings::text(key);
        const auto list = Settings::textList(key);
        require((whole ? 1 : 0) + (text ? 1 : 0) + (list ? 1 : 0) <= 1, "a value is of one kind");
    }
    require(Settings::store().contains(QStringLiteral("lf.limit")) || Settings::largeFilesLimit() == 100,
            "what is not chosen has its default");
    (void)Settings::duplicatesMinSize();
    return 0;
}
