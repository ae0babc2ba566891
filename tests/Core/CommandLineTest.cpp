#include "FileSystem/FileDescriptor.h"
#include "Model/FileUrl.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace tallyroom {

namespace {

using testing::HasSubstr;

/// Opened while everything is permitted: somebody without root's privileges may not come to where it lies.
const FileDescriptor program{::open(TALLYROOM_CLI, O_PATH | O_CLOEXEC)};

struct Answer {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// The real program, run with pipes in place of a terminal.
class CommandLine {
public:
    explicit CommandLine(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), TALLYROOM_CLI);
        std::vector<char*> raw;
        raw.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            raw.push_back(argument.data());
        }
        raw.push_back(nullptr);
        std::array<int, 2> output{};
        std::array<int, 2> errors{};
        EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(errors.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
        const std::string path = "/proc/self/fd/" + std::to_string(program.get());
        EXPECT_EQ(::posix_spawn(&m_process, path.c_str(), &actions, nullptr, raw.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(output[1]);
        ::close(errors[1]);
        m_output = FileDescriptor{output[0]};
        m_errors = FileDescriptor{errors[0]};
    }

    /// Returns once the program has started its workers, which is when it has begun to scan, or has ended.
    void waitForWorkers() const
    {
        const std::string tasks = "/proc/" + std::to_string(m_process) + "/task";
        const auto count = [&tasks] {
            std::error_code gone;
            return std::distance(std::filesystem::directory_iterator{tasks, gone}, {});
        };
        siginfo_t ended = {};
        while (count() < 8 && ended.si_pid == 0) {
            std::this_thread::yield();
            ::waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT);
        }
    }

    void signal(int number) const { ::kill(m_process, number); }

    Answer finish()
    {
        Answer answer;
        answer.output = readAll(m_output);
        answer.errors = readAll(m_errors);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        answer.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return answer;
    }

private:
    static std::string readAll(const FileDescriptor& pipe)
    {
        std::string text;
        std::array<char, 4096> piece{};
        for (ssize_t read = 0; (read = ::read(pipe.get(), piece.data(), piece.size())) > 0;) {
            text.append(piece.data(), static_cast<std::size_t>(read));
        }
        return text;
    }

    pid_t m_process = -1;
    FileDescriptor m_output;
    FileDescriptor m_errors;
};

Answer run(std::vector<std::string> arguments)
{
    return CommandLine{std::move(arguments)}.finish();
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        result.push_back(text.substr(start, end - start));
    }
    result.push_back(text.substr(start));
    return result;
}

TEST(CommandLine, ListsLargestFirstInEveryFormatAndLosesNoByte)
{
    const TemporaryTree tree{file("small\nname\xff\u202e", 5000), file("large,one.jpg", 200'000),
                             folder("empty")};
    const Answer table = run({"usage", tree.path()});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_EQ(table.errors, "");
    const auto rows = lines(table.output);
    ASSERT_EQ(rows.size(), 5U) << table.output;
    EXPECT_THAT(rows[0], HasSubstr("large,one.jpg"));
    EXPECT_THAT(rows[1], HasSubstr("small\\nname\\xff\\xe2\\x80\\xae"));
    EXPECT_THAT(rows[2], HasSubstr("empty/"));
    EXPECT_THAT(rows[3], HasSubstr("3 éléments"));
    EXPECT_THAT(table.output, testing::Not(HasSubstr("\033"))) << "no colours into a pipe";

    const Answer csv = run({"usage", tree.path(), "--format", "csv"});
    EXPECT_TRUE(csv.output.starts_with("Nom,Chemin,Taille (octets),Taille,Type,Modifié\n\"large,one.jpg\","));
    EXPECT_THAT(csv.output, HasSubstr("\n\"small\nname\xff\u202e\","));
    EXPECT_FALSE(csv.output.ends_with("\n"));

    const auto objects = lines(run({"usage", tree.path(), "--format", "json"}).output);
    ASSERT_EQ(objects.size(), 4U);
    const std::string encoded = "\"url\":\"" + tree.url("small\nname\xff\u202e").percentEncoded() + "\"";
    EXPECT_THAT(objects[1], HasSubstr(encoded));
    EXPECT_THAT(objects[2], HasSubstr("\"isDirectory\":true"));
}

TEST(CommandLine, SaysInFrenchWhatIsWrongAndExitsAccordingly)
{
    const TemporaryTree tree{file("file", 1)};

    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        std::string words;
    };

    for (const Case& c :
         {Case{{"usage", tree.path("missing")}, 1, "n'existe pas"},
          Case{{"usage", tree.path("file")}, 1, "n'est pas un dossier"}, Case{{"usage"}, 2, "manque"},
          Case{{}, 2, "manque"}, Case{{"usage", tree.path(), "--format", "xml"}, 2, "option"},
          Case{{"usage", tree.path(), "--format", ""}, 2, "option"},
          Case{{"usage", tree.path(), "--unknown"}, 2, "inconnu : --unknown"},
          Case{{"usages", tree.path()}, 2, "inconnu : usages"},
          Case{{"largest", tree.path(), "--limit", "-1"}, 2, "option"},
          Case{{"largest", tree.path(), "--limit", "99999999999999999999"}, 2, "option"},
          Case{{"build-caches", tree.path(), "--ecosystems", "rust,cobol"}, 2, "option"},
          Case{{"build-caches", tree.path(), "--ecosystems", ""}, 2, "option"},
          Case{{"git-repos", tree.path("missing")}, 1, "n'existe pas"}}) {
        const Answer answer = run(c.arguments);
        EXPECT_EQ(answer.exitCode, c.exitCode) << c.words;
        EXPECT_THAT(answer.errors, HasSubstr(c.words));
        EXPECT_EQ(answer.output, "");
    }
    EXPECT_EQ(run({"--version"}).output, "tallyroom-cli " TALLYROOM_VERSION "\n");
    EXPECT_EQ(run({"usage", "--help"}).exitCode, 0);
    EXPECT_EQ(run({"usage", "--", tree.path()}).exitCode, 0);
}

TEST(CommandLine, AFolderThatCannotBeListedIsNotAnEmptyOne)
{
    const TemporaryTree tree{folder("closed").withMode(0711), folder("gone")};
    ASSERT_EQ(::chmod(tree.path().c_str(), 0755), 0);
    const auto isRefused = [](const std::string& folder, const std::string& reason) {
        const Answer answer = run({"usage", folder});
        return answer.exitCode == 1 && answer.output.empty() &&
               answer.errors.find(reason) != std::string::npos;
    };
    if (::geteuid() == 0) {
        EXPECT_EQ(asUnprivilegedUser([&] { return isRefused(tree.path("closed"), "accès refusé") ? 1 : 0; }),
                  1);
    }
    EXPECT_EQ(inChildProcess([&] {
                  return ::chdir(tree.path("gone").c_str()) == 0 && ::rmdir(tree.path("gone").c_str()) == 0 &&
                                 isRefused(".", "n'existe pas")
                             ? 1
                             : 0;
              }),
              1);
}

TEST(CommandLine, TellsTheKindsOfFilesInEveryFormat)
{
    const TemporaryTree tree{file("a.jpg", 200'000), file("b.zip", 100'000), file("c.zip", 90'000),
                             folder("empty")};
    const auto rows = lines(run({"kinds", tree.path()}).output);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_THAT(rows[0], testing::AllOf(HasSubstr("Images"), HasSubstr("1 fichier")));
    EXPECT_THAT(rows[1], testing::AllOf(HasSubstr("Archives"), HasSubstr("2 fichiers")));
    EXPECT_THAT(rows[2], HasSubstr("3 fichiers"));
    EXPECT_TRUE(run({"kinds", tree.path(), "--format", "csv"})
                    .output.starts_with("Type,Taille (octets),Taille,Fichiers\nImages,"));
    EXPECT_TRUE(run({"kinds", tree.path(), "--format", "json"})
                    .output.starts_with("{\"kind\":\"image\",\"totalBytes\":"));
    EXPECT_EQ(run({"kinds", tree.path("empty"), "--format", "json"}).output, "");
    EXPECT_EQ(run({"kinds", tree.path("a.jpg")}).exitCode, 1);
}

TEST(CommandLine, TellsTheVolumesInEveryFormat)
{
    if (!isRootMounted()) {
        GTEST_SKIP() << "the mount table says nothing of this root";
    }
    const Answer table = run({"volumes"});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_THAT(lines(table.output)[0], testing::AllOf(HasSubstr("Capacité"), HasSubstr("Emplacement")));
    EXPECT_THAT(table.output, HasSubstr("  /\n"));
    EXPECT_THAT(run({"volumes", "--format", "csv"}).output, HasSubstr(",/,"));
    EXPECT_THAT(run({"volumes", "--format", "json"}).output, HasSubstr("\"path\":\"/\""));
    EXPECT_EQ(run({"volumes", "/"}).exitCode, 2);
}

TEST(CommandLine, SearchesPrintPathsAndTheSameListEveryTime)
{
    const TemporaryTree tree{file("a/node_modules/x", 5000), file("b/node_modules/x", 5000),
                             file("b/target/x", 50'000), file("c/.git/x", 5000), file("c/big", 90'000)};
    const auto rows = lines(run({"largest", tree.path(), "--limit", "2"}).output);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_THAT(rows[0], HasSubstr(tree.path("c/big")));
    EXPECT_THAT(rows[1], HasSubstr(tree.path("b/target/x")));

    const auto paths = [&tree](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin() + 1, {tree.path(), "--format", "csv"});
        std::vector<std::string> found;
        for (const std::string& line : lines(run(arguments).output)) {
            const std::size_t start = line.find(',') + 1;
            found.push_back(line.substr(start, line.find(',', start) - start));
        }
        found.erase(found.begin()); // the head of the table
        return found;
    };
    for (int round = 0; round < 5; ++round) {
        EXPECT_THAT(paths({"node-modules"}),
                    testing::ElementsAre(tree.path("a/node_modules"), tree.path("b/node_modules")));
        EXPECT_THAT(paths({"build-caches"}),
                    testing::ElementsAre(tree.path("b/target"), tree.path("a/node_modules"),
                                         tree.path("b/node_modules")));
    }
    EXPECT_THAT(paths({"build-caches", "--ecosystems", "jvm,rust"}),
                testing::ElementsAre(tree.path("b/target")));
    EXPECT_THAT(paths({"git-repos"}), testing::ElementsAre(tree.path("c/.git")));
}

TEST(CommandLine, ListsDuplicatesGroupByGroupInEveryFormat)
{
    const TemporaryTree tree{file("a,1", 200'000), file("b\n", 200'000), file("c1", 10'000),
                             file("c2", 10'000), file("alone", 77)};
    const auto duplicates = [&tree](std::vector<std::string> more) {
        more.insert(more.begin(), {"duplicates", tree.path()});
        return run(more);
    };
    EXPECT_THAT(lines(duplicates({}).output)[0], HasSubstr("0 groupe")) << "below 1 MiB nothing counts";
    const Answer table = duplicates({"--min-size", "100"});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_EQ(table.errors, "");
    EXPECT_TRUE(table.output.starts_with("2 × 200 Ko, 200 Ko en trop\n  " + tree.path("a,1") + "\n  " +
                                         tree.path("b\\n") + "\n\n2 × 10 Ko, "))
        << table.output;
    EXPECT_THAT(duplicates({"--min-size", "10001"}).output, HasSubstr("1 groupe, 200 Ko"));

    const std::string csv = duplicates({"--min-size", "100", "--format", "csv"}).output;
    EXPECT_TRUE(csv.starts_with("Groupe,Nom,Chemin,Taille (octets),Taille,Type,Modifié\nfull:200000|"))
        << csv;
    EXPECT_THAT(csv, HasSubstr(",\"a,1\","));
    const auto objects = lines(duplicates({"--min-size", "100", "--format", "json"}).output);
    ASSERT_GE(objects.size(), 4U);
    EXPECT_TRUE(objects[0].starts_with("{\"group\":\"full:200000|")) << objects[0];
    EXPECT_TRUE(objects[2].starts_with("{\"group\":\"head:10000|")) << objects[2];
    EXPECT_EQ(duplicates({"--min-size", "many"}).exitCode, 2);
}

TEST(CommandLine, StopsThoughAVolumeDoesNotAnswer)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the search for leaks at a program's end waits for every thread, the one that hangs too";
#endif
    const TemporaryTree tree{folder("silent"), file("a", 1)};
    const auto volume = TemporaryMount::silent(tree.path("silent"));
    if (!volume.isMounted()) {
        GTEST_SKIP() << volume.refusal();
    }
    for (const std::string name : {"usage", "largest", "kinds", "duplicates"}) {
        SCOPED_TRACE(name);
        CommandLine command{{name, tree.path()}};
        command.waitForWorkers();
        command.signal(SIGTERM);
        const Answer answer = command.finish();
        EXPECT_EQ(answer.exitCode, 130);
        EXPECT_THAT(answer.errors, HasSubstr("interrompue"));
    }
}

TEST(CommandLine, StopsInTheMiddleOfTheWholeMachineAndSaysSo)
{
    for (const std::string name : {"usage", "largest", "node-modules"}) {
        SCOPED_TRACE(name);
        CommandLine command{{name, "/", "--format", "json"}};
        command.waitForWorkers();
        command.signal(SIGINT);
        const Answer answer = command.finish();
        EXPECT_EQ(answer.exitCode, 130);
        EXPECT_THAT(answer.errors, HasSubstr("incomplète"));
    }

    CommandLine kinds{{"kinds", "/"}};
    kinds.waitForWorkers();
    kinds.signal(SIGINT);
    const Answer nothing = kinds.finish();
    EXPECT_EQ(nothing.exitCode, 130);
    EXPECT_EQ(nothing.output, "") << "half a breakdown tells nothing";
    EXPECT_THAT(nothing.errors, HasSubstr("interrompue"));

    const TemporaryTree tree{sparseFile("huge1", 100'000_MiB), sparseFile("huge2", 100'000_MiB)};
    CommandLine duplicates{{"duplicates", tree.path()}};
    duplicates.waitForWorkers();
    duplicates.signal(SIGTERM);
    const Answer none = duplicates.finish();
    EXPECT_EQ(none.exitCode, 130);
    EXPECT_EQ(none.output, "");
    EXPECT_THAT(none.errors, HasSubstr("interrompue"));
}

} // namespace

} // namespace tallyroom
