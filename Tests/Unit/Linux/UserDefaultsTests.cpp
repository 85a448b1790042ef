#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Linux/Foundation/PropertyListStore.h"
#include "Platform/Linux/Foundation/UserDefaultsNative.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <climits>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr auto highest = std::numeric_limits<std::int64_t>::max();

std::string xml(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + content + "\n</plist>\n";
}

std::string bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

ino_t inodeOf(const fs::path& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

unsigned modeOf(const fs::path& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

class DefaultsFile : public testing::Test {
protected:
    fs::path folder() const { return fs::path(folder_.path().toStdString()); }
    fs::path file() const { return folder() / "settings.plist"; }

    /// In place, as an editor might, without a new inode.
    void overwrite(const std::string& bytes) const { std::ofstream(file(), std::ios::binary) << bytes; }

    std::vector<std::string> namesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder())) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    bool storeAnswer(int answer) const {
        Linux::PropertyListStore store(file());
        store.setValue(answer, "answer");
        return store.write();
    }

    std::optional<NS::PropertyListValue> storedAnswer() const {
        return Linux::PropertyListStore(file()).value("answer");
    }

private:
    QTemporaryDir folder_;
};

class PropertyListStore : public DefaultsFile {};

TEST_F(PropertyListStore, AFileThatIsALinkStaysOne) {
    const auto elsewhere = folder() / "elsewhere";
    fs::create_directory(elsewhere);
    fs::create_symlink("elsewhere/real.plist", file());
    overwrite(xml("<dict/>"));
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_EQ(Linux::PropertyListStore(elsewhere / "real.plist").value("answer"), NS::PropertyListValue(42));
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 1) << "a side file is left";
}

TEST_F(PropertyListStore, ALinkThatLeadsNowhereIsReplaced) {
    fs::create_symlink("nowhere/real.plist", file());
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
}

TEST_F(PropertyListStore, ValuesComeBackWithTheirTypes) {
    const NS::Dictionary values = {
        {"true", true},
        {"false", false},
        {"one", 1},
        {"lowest", lowest},
        {"highest", highest},
        {"real", 0.1},
        {"whole real", 2.0},
        {"huge real", 1e300},
        {"infinite", std::numeric_limits<double>::infinity()},
        {"empty", ""},
        {"text", "Olá <&>\"' \t ]]> é😀"},
        {"array", NS::Array{1, "two", NS::Array{}, 3.5, false}},
        {"dictionary", NS::Dictionary{{"1.2.0", 3}, {"", NS::Dictionary{}}}},
        {"key & <more>", "x"},
    };
    Linux::PropertyListStore store(file());
    for (const auto& [key, value] : values) {
        store.setValue(value, key);
        EXPECT_EQ(store.value(key), value) << key;
    }
    ASSERT_TRUE(store.write());
    Linux::PropertyListStore other(file());
    for (const auto& [key, value] : values) {
        EXPECT_EQ(store.value(key), value) << key;
        EXPECT_EQ(other.value(key), value) << key;
    }
    EXPECT_EQ(other.value("no such key"), std::nullopt);
}

TEST_F(PropertyListStore, NumbersAreTheSameInALocaleWithDecimalCommas) {
    std::ofstream(folder() / "definition")
        << "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n";
    const auto command =
        "cd '" + folder().string() + "' && localedef -c -i definition -f ANSI_X3.4-1968 ./comma >log 2>&1";
    std::ignore = std::system(command.c_str()); // complains about the categories that are missing
    setenv("LOCPATH", folder().c_str(), 1);
    ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma")) << bytesOf(folder() / "log");
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    Linux::PropertyListStore store(file());
    store.setValue(1.5, "real");
    EXPECT_TRUE(store.write());
    EXPECT_NE(bytesOf(file()).find("<real>1.5</real>"), std::string::npos) << bytesOf(file());
    EXPECT_EQ(Linux::PropertyListStore(file()).value("real"), NS::PropertyListValue(1.5));
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

TEST_F(PropertyListStore, TheFileIsXMLForTheUserAlone) {
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_TRUE(bytesOf(file()).starts_with("<?xml"));
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
}

TEST_F(PropertyListStore, MissingFoldersAreMadeForTheUserAlone) {
    const auto deep = folder() / "a/b";
    Linux::PropertyListStore store(deep / "settings.plist");
    EXPECT_EQ(store.value("answer"), std::nullopt);
    store.setValue(42, "answer");
    EXPECT_TRUE(store.write());
    EXPECT_EQ(Linux::PropertyListStore(deep / "settings.plist").value("answer"), NS::PropertyListValue(42));
    EXPECT_EQ(modeOf(folder() / "a"), 0700U);
    EXPECT_EQ(modeOf(deep), 0700U);
}

TEST_F(PropertyListStore, ChangesWaitInMemoryUntilTheyAreWritten) {
    Linux::PropertyListStore store(file());
    store.setValue(42, "answer");
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(42));
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(PropertyListStore, BinaryListsAreReadToo) {
    // {"answer": 42}
    const auto binary = "bplist00\xd1\x01\x02Vanswer\x10\x2a\x08\x0b\x12"s + "\0\0\0\0\0\0\x01\x01"s +
                        "\0\0\0\0\0\0\0\x03"s + "\0\0\0\0\0\0\0\0"s + "\0\0\0\0\0\0\0\x14"s;
    overwrite(binary);
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
}

TEST_F(PropertyListStore, ReadsSeeWhatAnotherProcessWrites) {
    Linux::PropertyListStore store(file());
    EXPECT_EQ(store.value("answer"), std::nullopt);
    ASSERT_TRUE(storeAnswer(1));
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(1));
    std::this_thread::sleep_for(150ms); // for the file to count as settled
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(1));
    ASSERT_TRUE(storeAnswer(2));
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(2));
    fs::remove(file());
    EXPECT_EQ(store.value("answer"), std::nullopt);
}

TEST_F(PropertyListStore, ReadsSeeEditsInPlaceOfTheSameSize) {
    Linux::PropertyListStore store(file());
    for (int round = 100; round < 110; ++round) {
        overwrite(xml("<dict><key>answer</key><integer>" + std::to_string(round) + "</integer></dict>"));
        EXPECT_EQ(store.value("answer"), NS::PropertyListValue(round));
    }
}

/// Whether `action` opens the file.
bool opens(const fs::path& file, const std::function<void()>& action) {
    const int queue = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    EXPECT_GE(inotify_add_watch(queue, file.c_str(), IN_OPEN), 0);
    action();
    char event[sizeof(inotify_event) + NAME_MAX + 1];
    const bool isOpened = read(queue, event, sizeof event) > 0;
    close(queue);
    return isOpened;
}

TEST_F(PropertyListStore, OnlyAFileThatChangedJustNowIsReadAgain) {
    ASSERT_TRUE(storeAnswer(42));
    Linux::PropertyListStore store(file());
    store.value("answer");
    EXPECT_TRUE(opens(file(), [&] { store.value("answer"); })) << "a second change in the same tick would be missed";
    std::this_thread::sleep_for(150ms);
    store.value("answer");
    EXPECT_FALSE(opens(file(), [&] { store.value("answer"); }));
}

TEST_F(PropertyListStore, WritingKeepsTheKeysOfOtherProcesses) {
    Linux::PropertyListStore one(file());
    Linux::PropertyListStore two(file());
    one.setValue("one", "first");
    EXPECT_EQ(two.value("first"), std::nullopt);
    two.setValue("two", "second");
    ASSERT_TRUE(one.write());
    ASSERT_TRUE(two.write());
    EXPECT_EQ(one.value("second"), NS::PropertyListValue("two"));
    EXPECT_EQ(two.value("first"), NS::PropertyListValue("one"));
    two.setValue(std::nullopt, "second");
    ASSERT_TRUE(two.write());
    EXPECT_EQ(one.value("second"), std::nullopt);
    EXPECT_EQ(one.value("first"), NS::PropertyListValue("one"));
}

TEST_F(PropertyListStore, AWrittenChangeGivesWayToALaterOneOfAnotherProcess) {
    Linux::PropertyListStore store(file());
    store.setValue(1, "answer");
    ASSERT_TRUE(store.write());
    ASSERT_TRUE(storeAnswer(2));
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(2));
    store.setValue(3, "other");
    ASSERT_TRUE(store.write());
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(2));
}

TEST_F(PropertyListStore, WritingKeepsWhatOnlyOthersUnderstand) {
    overwrite(xml("<dict><key>blob</key><data>AAEC</data><key>when</key><date>2026-11-21T10:45:56Z</date>"
                  "<key>reference</key><dict><key>CF$UID</key><integer>7</integer></dict>"
                  "<key>large</key><integer>18446744073709551615</integer></dict>"));
    EXPECT_EQ(Linux::PropertyListStore(file()).value("blob"), NS::PropertyListValue());
    EXPECT_EQ(Linux::PropertyListStore(file()).value("when"), NS::PropertyListValue());
    ASSERT_TRUE(storeAnswer(42));
    const auto text = bytesOf(file());
    for (const char* part : {"AAEC", "<date>2026-11-21T10:45:56Z</date>", "CF$UID", "18446744073709551615", "answer"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
    }
}

TEST_F(PropertyListStore, IntegersAboveAllSignedOnesAreNone) {
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases = {
        {"-1", -1},
        {"9223372036854775807", highest},
        {"-9223372036854775808", lowest},
        {"9223372036854775808", std::nullopt},
        {"18446744073709551615", std::nullopt},
        {"99999999999999999999", std::nullopt},
    };
    for (const auto& [text, expected] : cases) {
        overwrite(xml("<dict><key>answer</key><integer>" + text + "</integer></dict>"));
        const auto value = Linux::PropertyListStore(file()).value("answer");
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(value->integer(), expected) << text;
    }
}

TEST_F(PropertyListStore, WhatTheFileHoldsAlreadyIsNotWrittenAgain) {
    ASSERT_TRUE(storeAnswer(42));
    const auto inode = inodeOf(file());
    const fs::path held = folder() / "held"; // so that the inode cannot be used again
    fs::create_hard_link(file(), held);
    EXPECT_TRUE(storeAnswer(42));
    EXPECT_EQ(inodeOf(file()), inode);
    EXPECT_TRUE(storeAnswer(43));
    EXPECT_NE(inodeOf(file()), inode);
}

TEST_F(PropertyListStore, RemovingWhatIsNotThereWritesNothing) {
    Linux::PropertyListStore store(file());
    store.setValue(std::nullopt, "answer");
    EXPECT_TRUE(store.write());
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(PropertyListStore, AValueThatNoListCanHoldIsPassedOver) {
    Linux::PropertyListStore store(file());
    store.setValue(42, "answer");
    store.setValue(NS::PropertyListValue(), "answer");
    store.setValue(NS::Array{1, NS::Dictionary{{"key", NS::PropertyListValue()}}}, "answer");
    NS::Array deep;
    for (int level = 0; level < 200; ++level) {
        NS::Array outer;
        outer.emplace_back(std::move(deep));
        deep = std::move(outer);
    }
    store.setValue(deep, "answer");
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(42));
    EXPECT_TRUE(store.write());
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
}

TEST_F(PropertyListStore, ASideFileLeftByAKillIsOverwritten) {
    std::ofstream(folder() / "settings.plist.new") << "half of a fi";
    fs::permissions(folder() / "settings.plist.new", fs::perms::all);
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
}

TEST_F(PropertyListStore, ALinkInTheSideFilesPlaceIsNotFollowed) {
    std::ofstream(folder() / "precious") << "precious";
    fs::create_symlink(folder() / "precious", folder() / "settings.plist.new");
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(bytesOf(folder() / "precious"), "precious");
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
}

TEST_F(PropertyListStore, AnotherProcessThatIsWritingIsWaitedFor) {
    const int other = open(folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    std::thread([this] { EXPECT_FALSE(storeAnswer(1)); }).join();
    EXPECT_FALSE(fs::exists(file()));
    std::thread waiting([this] { EXPECT_TRUE(storeAnswer(2)); });
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(fs::exists(file()));
    close(other);
    waiting.join();
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(2));
}

/// No file may grow beyond a few bytes, for the life of this object.
class FullDisk {
public:
    FullDisk() {
        getrlimit(RLIMIT_FSIZE, &limit_);
        rlimit small = limit_;
        small.rlim_cur = 64;
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit limit_ = {};
    void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(PropertyListStore, AFullDiskKeepsTheChangeInMemoryAndTheFileAsItWas) {
    ASSERT_TRUE(storeAnswer(1));
    const auto before = bytesOf(file());
    Linux::PropertyListStore store(file());
    store.setValue(2, "answer");
    {
        const FullDisk full;
        EXPECT_FALSE(store.write());
    }
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(2));
    EXPECT_EQ(bytesOf(file()), before);
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
    store.setValue(3, "other");
    EXPECT_TRUE(store.write());
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(2));
}

TEST_F(PropertyListStore, AFullDiskLeavesADamagedFileInItsPlace) {
    overwrite("nonsense");
    const FullDisk full;
    EXPECT_FALSE(storeAnswer(1));
    EXPECT_EQ(bytesOf(file()), "nonsense");
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
}

TEST_F(PropertyListStore, AListTooLargeToBeReadAgainIsNotWritten) {
    ASSERT_TRUE(storeAnswer(42));
    Linux::PropertyListStore store(file());
    store.setValue(std::string(std::size_t{2} << 20, 'x'), "much");
    EXPECT_FALSE(store.write());
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
}

/// As a user without rights over the folder's file, for the life of this object.
class Unprivileged {
public:
    Unprivileged() {
        if (wasRoot_) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~Unprivileged() {
        if (wasRoot_) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    const bool wasRoot_ = geteuid() == 0;
};

TEST_F(PropertyListStore, AFolderWithoutPermissionKeepsTheChangeInMemory) {
    ASSERT_TRUE(storeAnswer(1));
    fs::permissions(file(), static_cast<fs::perms>(0644));
    fs::permissions(folder(), static_cast<fs::perms>(0555));
    Linux::PropertyListStore store(file());
    {
        const Unprivileged user;
        store.setValue(2, "answer");
        EXPECT_FALSE(store.write());
        EXPECT_EQ(store.value("answer"), NS::PropertyListValue(2));
        EXPECT_EQ(storedAnswer(), NS::PropertyListValue(1));
    }
    fs::permissions(folder(), fs::perms::owner_all);
    EXPECT_TRUE(store.write());
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(2));
}

TEST_F(PropertyListStore, AnUnreadableFileReadsAsEmptyAndIsKeptAside) {
    ASSERT_TRUE(storeAnswer(1));
    const auto before = bytesOf(file());
    fs::permissions(file(), fs::perms::none);
    fs::permissions(folder(), fs::perms::all);
    {
        const Unprivileged user;
        Linux::PropertyListStore store(file());
        EXPECT_EQ(store.value("answer"), std::nullopt);
        store.setValue(2, "answer");
        EXPECT_TRUE(store.write());
        EXPECT_EQ(storedAnswer(), NS::PropertyListValue(2));
    }
    fs::permissions(folder() / "settings.plist.damaged", fs::perms::owner_read);
    EXPECT_EQ(bytesOf(folder() / "settings.plist.damaged"), before);
}

TEST_F(PropertyListStore, AFileThatBecomesReadableAgainIsRead) {
    ASSERT_TRUE(storeAnswer(1));
    fs::permissions(file(), fs::perms::none);
    fs::permissions(folder(), fs::perms::all);
    std::this_thread::sleep_for(150ms);
    Linux::PropertyListStore store(file());
    {
        const Unprivileged user;
        EXPECT_EQ(store.value("answer"), std::nullopt);
    }
    fs::permissions(file(), fs::perms::owner_read);
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(1));
}

TEST_F(PropertyListStore, AFolderInTheFilesPlaceReadsAsEmptyAndIsKeptAside) {
    fs::create_directory(file());
    std::ofstream(file() / "inside") << "x";
    EXPECT_EQ(storedAnswer(), std::nullopt);
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_TRUE(fs::exists(folder() / "settings.plist.damaged/inside"));
}

TEST_F(PropertyListStore, APipeInTheFilesPlaceHoldsNobodyUp) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_EQ(storedAnswer(), std::nullopt);
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_TRUE(fs::is_fifo(folder() / "settings.plist.damaged"));
}

TEST_F(PropertyListStore, AFileThatFailsToBeReadIsNotReplaced) {
    fs::create_symlink("/proc/self/mem", file()); // a regular file whose first byte is an input/output error
    EXPECT_EQ(storedAnswer(), std::nullopt);
    EXPECT_FALSE(storeAnswer(42));
    EXPECT_TRUE(fs::is_symlink(file()));
}

TEST_F(PropertyListStore, AProcessOutOfDescriptorsDamagesNothing) {
    ASSERT_TRUE(storeAnswer(1));
    Linux::PropertyListStore store(file());
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(1));
    const auto before = bytesOf(file());
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_EQ(store.value("answer"), NS::PropertyListValue(1)) << "what was read before still counts";
    store.setValue(2, "answer");
    const bool isWritten = store.write();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(bytesOf(file()), before);
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s});
}

TEST_F(PropertyListStore, ThreadsShareOneStore) {
    Linux::PropertyListStore store(file());
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&store, key = std::to_string(number)] {
            for (int round = 0; round <= 50; ++round) {
                store.setValue(round, key);
                EXPECT_EQ(store.value(key), NS::PropertyListValue(round));
                EXPECT_TRUE(round % 5 != 0 || store.write());
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    Linux::PropertyListStore other(file());
    for (const char* key : {"0", "1", "2", "3"}) {
        EXPECT_EQ(other.value(key), NS::PropertyListValue(50)) << key;
    }
}

std::string repeated(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string bigEndian(std::uint64_t number, int size) {
    std::string result;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        result += static_cast<char>(number >> shift & 0xff);
    }
    return result;
}

/// Objects of a binary list, the first of them the top.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string offsets;
    for (const auto& object : objects) {
        offsets += bigEndian(bytes.size(), 4);
        bytes += object;
    }
    const auto end = bytes.size();
    return bytes + offsets + bigEndian(0, 6) + "\x04\x04" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(end, 8);
}

/// A dictionary with one key, whose value is a chain of arrays: each holds the next `width` times.
std::string binaryChain(int length, int width) {
    std::vector<std::string> objects = {"\xd1" + bigEndian(1, 4) + bigEndian(2, 4), "Qk"};
    for (int i = 1; i < length; ++i) {
        objects.push_back(static_cast<char>(0xa0 + width) + repeated(bigEndian(objects.size() + 1, 4), width));
    }
    objects.push_back("\x09");
    return binaryList(objects);
}

/// One long text, and an array that holds it very often.
std::string binaryRepetition() {
    const auto text = "\x5f\x12" + bigEndian(900000, 4) + std::string(900000, 'x');
    const auto array = "\xaf\x12" + bigEndian(15000, 4) + repeated(bigEndian(3, 4), 15000);
    return binaryList({"\xd1" + bigEndian(1, 4) + bigEndian(2, 4), "Qk", array, text});
}

struct Damage {
    const char* name;
    std::string bytes;
};

void PrintTo(const Damage& damage, std::ostream* stream) {
    *stream << damage.name;
}

class DamagedFile : public DefaultsFile, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedFile, ReadsAsEmptyAndIsKeptAsideByTheNextWrite) {
    overwrite(GetParam().bytes);
    EXPECT_EQ(storedAnswer(), std::nullopt);
    EXPECT_EQ(namesInFolder(), std::vector{"settings.plist"s}) << "reading must not move it";
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_EQ(bytesOf(folder() / "settings.plist.damaged"), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    All, DamagedFile,
    testing::Values(
        Damage{"Empty", ""}, Damage{"Text", "answer = 41\n"}, Damage{"Zeros", std::string(4096, '\0')},
        Damage{"Array", xml("<array><integer>41</integer></array>")}, Damage{"Scalar", xml("<true/>")},
        Damage{"Truncated", "<plist version=\"1.0\"><dict><key>answer</key><integer>41</integer><key>oth"},
        Damage{"MismatchedTags", xml("<dict><key>answer</key><integer>41</array></dict>")},
        Damage{"DeepXML",
               xml("<dict><key>answer</key>" + repeated("<array>", 60000) + repeated("</array>", 60000) + "</dict>")},
        Damage{"UnclosedDeepXML", "<plist><dict><key>answer</key>" + repeated("<array>", 140000)},
        Damage{"DeepBinary", binaryChain(100000, 1)}, Damage{"EndlessBinary", binaryChain(90, 2)},
        Damage{"RepetitiveBinary", binaryRepetition()},
        Damage{"NullInBinaryKey",
               binaryList({"\xd1" + bigEndian(1, 4) + bigEndian(2, 4), "\x63" + "\0a\0\0\0b"s, "\x09"})},
        Damage{"CircularBinary", binaryList({"\xd1" + bigEndian(1, 4) + bigEndian(0, 4), "Qk"})},
        Damage{"BinaryWithWildOffsets", "bplist00\xd1\x01\x02" + bigEndian(0, 6) + "\x08\x08" + repeated("\xff", 24)},
        Damage{"BinaryWithoutTrailer", "bplist00\xd0"},
        Damage{"TooLarge", xml("<dict><key>answer</key><integer>41</integer></dict>") + std::string(1 << 20, '\n')}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(PropertyListStore, AListAsDeepAsAllowedIsReadAndWritten) {
    overwrite(xml("<dict><key>deep</key>" + repeated("<array>", 999) + repeated("</array>", 999) + "</dict>"));
    ASSERT_TRUE(storeAnswer(42));
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
    EXPECT_TRUE(Linux::PropertyListStore(file()).value("deep")->array());
}

TEST_F(PropertyListStore, ADamagedFileNeverTakesThePlaceOfAnEarlierOne) {
    for (const char* text : {"first", "second", "third"}) {
        overwrite(text);
        ASSERT_TRUE(storeAnswer(42));
    }
    EXPECT_EQ(bytesOf(folder() / "settings.plist.damaged"), "first");
    EXPECT_EQ(bytesOf(folder() / "settings.plist.damaged-2"), "second");
    EXPECT_EQ(bytesOf(folder() / "settings.plist.damaged-3"), "third");
    EXPECT_EQ(storedAnswer(), NS::PropertyListValue(42));
}

class UserDefaults : public DefaultsFile {
protected:
    NS::UserDefaults defaults = Linux::handle<NS::UserDefaults>(std::make_shared<Linux::UserDefaultsNative>(file()));

    void set(const NS::PropertyListValue& value) { defaults.setObject(value, "key"); }
    static void finishPass() { QCoreApplication::processEvents(); }
};

TEST_F(UserDefaults, AChangeIsWrittenAtTheEndOfThePass) {
    set(42);
    EXPECT_EQ(defaults.integerForKey("key"), 42);
    EXPECT_FALSE(fs::exists(file()));
    finishPass();
    EXPECT_EQ(Linux::PropertyListStore(file()).value("key"), NS::PropertyListValue(42));
}

TEST_F(UserDefaults, AValueSetAndRemovedInOnePassNeverReachesTheDisk) {
    set("en");
    EXPECT_EQ(defaults.stringForKey("key"), "en");
    defaults.setObject(std::nullopt, "key");
    EXPECT_EQ(defaults.stringForKey("key"), std::nullopt);
    finishPass();
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserDefaults, AValueSetAndSetBackInOnePassLeavesTheFileAlone) {
    set("pt-BR");
    finishPass();
    const auto inode = inodeOf(file());
    fs::create_hard_link(file(), folder() / "held"); // so that the inode cannot be used again
    set("en");
    set("pt-BR");
    finishPass();
    EXPECT_EQ(inodeOf(file()), inode);
}

TEST_F(UserDefaults, SynchronizingWritesAtOnce) {
    set(42);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(Linux::PropertyListStore(file()).value("key"), NS::PropertyListValue(42));
}

TEST_F(UserDefaults, SynchronizingSaysWhenItFails) {
    set(42);
    const FullDisk full;
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.integerForKey("key"), 42);
}

TEST_F(UserDefaults, AFailedWriteIsTriedAgainWithTheNextChange) {
    set(42);
    {
        const FullDisk full;
        finishPass();
    }
    EXPECT_FALSE(fs::exists(file()));
    defaults.setBool(true, "other");
    finishPass();
    EXPECT_EQ(Linux::PropertyListStore(file()).value("key"), NS::PropertyListValue(42));
}

TEST_F(UserDefaults, AChangeFromAnotherThreadIsWrittenByTheEventLoop) {
    std::thread([this] { set(42); }).join();
    EXPECT_FALSE(fs::exists(file()));
    finishPass();
    EXPECT_EQ(Linux::PropertyListStore(file()).value("key"), NS::PropertyListValue(42));
}

TEST_F(UserDefaults, AChangeIsWrittenAlthoughNobodyHoldsTheDefaultsAnyMore) {
    set(42);
    defaults = NS::UserDefaults();
    finishPass();
    EXPECT_EQ(Linux::PropertyListStore(file()).value("key"), NS::PropertyListValue(42));
}

TEST_F(UserDefaults, RegisteredValuesStandInForMissingOnesAndAreNeverWritten) {
    defaults.registerDefaults({{"key", 540}, {"hint", "x"}});
    defaults.registerDefaults({{"hint", "y"}});
    EXPECT_EQ(defaults.integerForKey("key"), 540);
    EXPECT_EQ(defaults.stringForKey("hint"), "y");
    set(7);
    EXPECT_EQ(defaults.integerForKey("key"), 7);
    finishPass();
    EXPECT_EQ(bytesOf(file()).find("hint"), std::string::npos);
    defaults.setObject(std::nullopt, "key");
    EXPECT_EQ(defaults.integerForKey("key"), 540);
}

TEST_F(UserDefaults, AStoredValueOfAnotherTypeHidesTheRegisteredOne) {
    defaults.registerDefaults({{"key", "registered"}});
    set(NS::Array{1});
    EXPECT_EQ(defaults.stringForKey("key"), std::nullopt);
}

TEST_F(UserDefaults, BooleansAreReadFromTexts) {
    for (const char* text : {"YES", "yes", "Y", "y", "true", "T", "t", "1", "9", "01", "0001x", "+1", "-1",
                             " \t\n-0Yes", "7up", "000t", "0.1", "+y"}) {
        set(text);
        const bool expected = text != "0.1"s; // the point ends the zeros
        EXPECT_EQ(defaults.boolForKey("key"), expected) << text;
    }
    for (const char* text :
         {"", "NO", "no", "false", "0", "00", "off", "on", "x1", "- 1", "--1", "+-1", " ", "+", "é"}) {
        set(text);
        EXPECT_FALSE(defaults.boolForKey("key")) << text;
    }
}

TEST_F(UserDefaults, BooleansAreReadFromNumbers) {
    const std::vector<std::pair<NS::PropertyListValue, bool>> cases = {
        {true, true},   {false, false}, {1, true},    {-1, true},    {0, false},
        {lowest, true}, {0.5, true},    {0.0, false}, {-0.0, false}, {NS::Array{1}, false}};
    for (const auto& [value, expected] : cases) {
        set(value);
        EXPECT_EQ(defaults.boolForKey("key"), expected) << &value - &cases.front().first;
    }
}

TEST_F(UserDefaults, IntegersAreReadFromTexts) {
    const std::vector<std::pair<const char*, std::int64_t>> cases = {
        {"540", 540},
        {" \t\n540 minutes", 540},
        {"+12", 12},
        {"-12", -12},
        {"0012", 12},
        {"1.9", 1},
        {"1e3", 1},
        {"0x10", 0},
        {"", 0},
        {"x", 0},
        {"YES", 0},
        {"- 1", 0},
        {"+-1", 0},
        {"--1", 0},
        {"-+1", 0},
        {"9223372036854775807", highest},
        {"9223372036854775808", highest},
        {"-9223372036854775808", lowest},
        {"-9223372036854775809", lowest},
        {"99999999999999999999999999", highest},
    };
    for (const auto& [text, expected] : cases) {
        set(text);
        EXPECT_EQ(defaults.integerForKey("key"), expected) << text;
    }
}

TEST_F(UserDefaults, IntegersAreReadFromOtherNumbers) {
    const std::vector<std::pair<NS::PropertyListValue, std::int64_t>> cases = {
        {true, 1},         {false, 0},        {lowest, lowest},  {1.9, 1},
        {-1.9, -1},        {1e300, highest},  {-1e300, lowest},  {std::nan(""), 0},
        {0x1p63, highest}, {-0x1p63, lowest}, {NS::Array{1}, 0}, {NS::Dictionary{}, 0}};
    for (const auto& [value, expected] : cases) {
        set(value);
        EXPECT_EQ(defaults.integerForKey("key"), expected) << expected;
    }
}

TEST_F(UserDefaults, TextsAreReadFromNumbers) {
    const std::vector<std::pair<NS::PropertyListValue, const char*>> cases = {
        {"", ""},
        {"text", "text"},
        {true, "1"},
        {false, "0"},
        {540, "540"},
        {lowest, "-9223372036854775808"},
        {0.1, "0.1"},
        {9.95, "9.95"},
        {-2.5, "-2.5"},
        {100000.0, "100000"},
        {1e16, "10000000000000000"},
        {1e17, "1e+17"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1.0 / 3, "0.3333333333333333"},
        {1e300, "1e+300"},
        {0.0, "0"},
        {std::numeric_limits<double>::infinity(), "inf"},
    };
    for (const auto& [value, expected] : cases) {
        set(value);
        EXPECT_EQ(defaults.stringForKey("key"), expected);
    }
    set(NS::Array{"text"});
    EXPECT_EQ(defaults.stringForKey("key"), std::nullopt);
    set(NS::Dictionary{{"a", "text"}});
    EXPECT_EQ(defaults.stringForKey("key"), std::nullopt);
}

TEST_F(UserDefaults, OnlyDictionariesAreReadAsDictionaries) {
    const NS::Dictionary attempts = {{"1.2.0", 3}};
    set(attempts);
    EXPECT_EQ(defaults.dictionaryForKey("key"), attempts);
    for (const NS::PropertyListValue& value : {NS::PropertyListValue("1.2.0"), NS::PropertyListValue(3),
                                               NS::PropertyListValue(true), NS::PropertyListValue(NS::Array{3})}) {
        set(value);
        EXPECT_EQ(defaults.dictionaryForKey("key"), std::nullopt);
    }
}

TEST_F(UserDefaults, TheStandardOnesAreCalledAfterTheProgram) {
    auto standard = NS::UserDefaults::standardUserDefaults();
    EXPECT_EQ(standard, NS::UserDefaults::standardUserDefaults());
    standard.setInteger(42, "UserDefaultsTests");
    ASSERT_TRUE(standard.synchronize());
    const auto name = fs::read_symlink("/proc/self/exe").filename().string() + ".plist";
    Linux::PropertyListStore store(fs::path(std::getenv("XDG_CONFIG_HOME")) / name);
    EXPECT_EQ(store.value("UserDefaultsTests"), NS::PropertyListValue(42));
    standard.setObject(std::nullopt, "UserDefaultsTests");
}

} // namespace
