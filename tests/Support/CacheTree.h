#pragma once

#include "Support/TemporaryTree.h"

#include <filesystem>
#include <map>

namespace tallyroom {

/// Sets the modification time of everything in a tree, in seconds since 1970; folders after what they hold.
inline void dateAll(const TemporaryTree& tree, std::int64_t seconds)
{
    namespace fs = std::filesystem;
    const auto date =
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds{std::chrono::seconds{seconds}});
    for (const fs::directory_entry& item : fs::recursive_directory_iterator{tree.path()}) {
        if (!item.is_symlink()) {
            fs::last_write_time(item.path(), date);
        }
    }
}

/// Folders called like caches, of which the truth is known: whose they are, after "?" where nothing
/// proves it. Written long ago.
class CacheTree : public TemporaryTree {
public:
    CacheTree()
        : TemporaryTree{file("site/package.json", 2),
                        file("site/node_modules/a/index.js", 9000),
                        file("site/dist/app.js", 9000),
                        file("site/build/app.js", 9000),
                        file("site/.next/page", 9000),
                        file("crate/Cargo.toml", 9),
                        file("crate/target/debug/app", 9000),
                        file("maven/pom.xml", 9),
                        file("maven/target/app.jar", 9000),
                        file("android/build.gradle.kts", 9),
                        file("android/build/app.apk", 9000),
                        file("android/.gradle/x", 9000),
                        file("wheel/setup.py", 9),
                        file("wheel/dist/a.whl", 9000),
                        file("wheel/.venv/x", 9),
                        file("shop/composer.json", 9),
                        file("shop/vendor/x", 9000),
                        folder("phone/App.xcodeproj"),
                        file("phone/DerivedData/x", 9000)}
    {
        add({file("lone1/node_modules/.package-lock.json", 9), file("lone2/target/.rustc_info.json", 9),
             file("lone3/.venv/pyvenv.cfg", 9), file("lone4/__pycache__/m.cpython-311.pyc", 9),
             file("lone5/build/CACHEDIR.TAG", "Signature: 8a477f597d28d172789f06886806bc55\n"),
             file("Documents/Maison/build/permis.pdf", 9000), file("mixed/package.json", 2),
             file("mixed/target/x", 9), file("forged/build/CACHEDIR.TAG", std::string(43, 'S')),
             fifo("fifo/build/CACHEDIR.TAG"), folder("folders/package.json"), file("folders/dist/x", 9),
             folder("empty/__pycache__"), file("go/go.mod", 9), file("go/vendor/x", 9)});
        dateAll(*this, 1'600'000'000);
    }

    /// By path.
    [[nodiscard]] static const std::map<std::string, std::string>& truth()
    {
        static const std::map<std::string, std::string> known{
            {"site/node_modules", "javascript"},
            {"site/dist", "javascript"},
            {"site/build", "javascript"},
            {"site/.next", "javascript"},
            {"crate/target", "rust"},
            {"maven/target", "jvm"},
            {"android/build", "jvm"},
            {"android/.gradle", "jvm"},
            {"wheel/dist", "python"},
            {"wheel/.venv", "python"},
            {"shop/vendor", "php"},
            {"phone/DerivedData", "xcode"},
            {"lone1/node_modules", "javascript"},
            {"lone2/target", "rust"},
            {"lone3/.venv", "python"},
            {"lone4/__pycache__", "python"},
            {"lone5/build", "javascript"},
            {"Documents/Maison/build", "?javascript"},
            {"mixed/target", "?rust"},
            {"forged/build", "?javascript"},
            {"fifo/build", "?javascript"},
            {"folders/dist", "?javascript"},
            {"empty/__pycache__", "?python"},
            {"go/vendor", "?php"},
        };
        return known;
    }
};

} // namespace tallyroom
