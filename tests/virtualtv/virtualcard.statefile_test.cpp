// SPDX-License-Identifier: Apache-2.0
// The state file of the virtual cards: what is taken for one, and who may use it at the same time.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>

#include "journal.h"
#include "virtualcardtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// --- The state file

TEST_F(VirtualCard, AMissingStateFileIsMadeForItsUserAlone)
{
    EXPECT_FALSE(std::filesystem::exists(stateFile()));
    EXPECT_EQ(writeTo(opened("default").get(), "Softmaster", {40}), 1);
    struct stat status = {};
    ASSERT_EQ(stat(stateFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(VirtualCard, AStateFileIsTakenAsItWasLeft)
{
    leaveStateFile();
    const ControlPtr card = opened("default");
    EXPECT_EQ(valueOf(card.get(), "Softmaster"), 40);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 0);
}

TEST_F(VirtualCard, AStateFileThatIsNoneIsMadeAnew)
{
    leaveStateFile();
    const std::string good = stateBytes();
    const std::string bad[] = {
        "",
        "x",
        good.substr(0, good.size() - 1),
        good + "x",
        std::string(good.size(), 'x'),
        std::string(good.size(), '\0'),
        "K" + good.substr(1),
        std::string(1 << 20, '\xff'),
    };
    for (const std::string& bytes : bad) {
        writeStateFile(bytes);
        EXPECT_TRUE(Neighbour{[] {
                        const ControlPtr mixer = opened("default");
                        const ControlPtr television = opened("hw:0");
                        bool zero = true;
                        for (const ElementRow& row : kMixer)
                            zero = zero && valueOf(mixer.get(), row.name) == 0;
                        for (const ElementRow& row : kDriver)
                            zero = zero && valuesOf(television.get(), row.name, row.count) ==
                                               Values(row.count, 0);
                        return zero && writeTo(mixer.get(), "Softmaster", {40}) == 1;
                    }}.works())
            << bytes.size() << " bytes";
        EXPECT_EQ(stateBytes(), good) << bytes.size() << " bytes";
    }
}

TEST_F(VirtualCard, AStateFileThatIsNoFileIsRefused)
{
    std::filesystem::create_directory(stateFile());
    EXPECT_EQ(openStatus("hw:0"), -EISDIR);
    EXPECT_EQ(openStatus("default"), -EISDIR);
    std::filesystem::remove(stateFile());

    ASSERT_EQ(mkfifo(stateFile().c_str(), 0600), 0);
    EXPECT_LT(openStatus("hw:0"), 0);
    std::filesystem::remove(stateFile());

    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(virtualtv::cardHandles().opened, 0);
    EXPECT_EQ(openStatus("hw:0"), 0); // the next attempt starts afresh
}

TEST_F(VirtualCard, AStateFileThatIsALinkIsRefusedAndItsTargetUntouched)
{
    const std::filesystem::path target = directory() / "precious";
    std::ofstream{target} << "do not touch";
    std::filesystem::create_symlink(target, stateFile());
    EXPECT_EQ(openStatus("default"), -ELOOP);
    EXPECT_EQ(stateBytes(), "do not touch");

    std::filesystem::remove(stateFile());
    std::filesystem::create_symlink(directory() / "nowhere", stateFile());
    EXPECT_EQ(openStatus("default"), -ELOOP);
    EXPECT_FALSE(std::filesystem::exists(directory() / "nowhere"));
}

TEST_F(VirtualCard, AStateFileWithoutAFolderIsRefused)
{
    setenv("KEP_VIRTUALTV_STATE", (directory() / "nowhere" / "cards.state").c_str(), 1);
    EXPECT_EQ(openStatus("default"), -ENOENT);
}

TEST_F(VirtualCard, AStateFileCutShortWhileInUseFailsTheAccessOnly)
{
    const ControlPtr card = opened("default");
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 1);
    forget();
    std::filesystem::resize_file(stateFile(), 0);
    Values values(1);
    EXPECT_EQ(readFrom(card.get(), "Softmaster", values), -EIO);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {50}), -EIO);
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"default", "Softmaster", {50}, -EIO}));
    EXPECT_EQ(information(card.get(), "Softmaster").status, 0);
}

TEST_F(VirtualCard, AStateFileIsLeftAloneWhileAnotherProcessMakesIt)
{
    leaveStateFile();
    const std::string good = stateBytes();
    writeStateFile("");
    const int file = open(stateFile().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    Neighbour neighbour{[file] {
        return close(file) == 0 && valueOf(opened("default").get(), "Softmaster") == 40;
    }};
    neighbour.start();
    EXPECT_FALSE(neighbour.endsWithin(200));
    EXPECT_EQ(stateBytes(), "");
    EXPECT_EQ(pwrite(file, good.data(), good.size(), 0), static_cast<ssize_t>(good.size()));
    EXPECT_EQ(flock(file, LOCK_UN), 0);
    EXPECT_TRUE(neighbour.succeeds());
    close(file);
}

TEST_F(VirtualCard, ProcessesThatMakeTheStateFileTogetherKeepEachOthersValues)
{
    for (int round = 0; round < 30; ++round) {
        setenv("KEP_VIRTUALTV_STATE", (directory() / std::to_string(round)).c_str(), 1);
        Neighbour first{[] { return writeTo(opened("default").get(), "Softmaster0", {40}) == 1; }};
        Neighbour second{[] { return writeTo(opened("default").get(), "Softmaster1", {50}) == 1; }};
        Neighbour third{[] {
            const ControlPtr card = opened("default");
            return valueOf(card.get(), "Softmaster0") == 40 &&
                   valueOf(card.get(), "Softmaster1") == 50;
        }};
        first.start();
        second.start();
        EXPECT_TRUE(first.succeeds());
        EXPECT_TRUE(second.succeeds());
        EXPECT_TRUE(third.works()) << "round " << round;
    }
}

TEST_F(VirtualCard, ProcessesThatWriteTogetherLeaveWholeValues)
{
    const auto writes = [](const char* own, long number) {
        return [own, number] {
            const ControlPtr card = opened("hw:0");
            bool good = true;
            for (long i = 1; i <= 500; ++i) {
                good = good && writeTo(card.get(), "Gain Input", {number, number, number}) >= 0;
                good = good && writeTo(card.get(), own, {i}) == 1;
                good = good && valueOf(card.get(), own) == i;
            }
            return good;
        };
    };
    Neighbour first{writes("Sndout Open", 1)};
    Neighbour second{writes("Sndout Close", 2)};
    first.start();
    second.start();
    EXPECT_TRUE(first.succeeds());
    EXPECT_TRUE(second.succeeds());
    const ControlPtr card = opened("hw:0");
    EXPECT_EQ(valueOf(card.get(), "Sndout Open"), 500);
    EXPECT_EQ(valueOf(card.get(), "Sndout Close"), 500);
    EXPECT_THAT((std::vector<Values>{{1, 1, 1}, {2, 2, 2}}),
                Contains(valuesOf(card.get(), "Gain Input", 3)));
}
