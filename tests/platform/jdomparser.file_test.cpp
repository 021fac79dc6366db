// SPDX-License-Identifier: Apache-2.0
// The JSON parser: the files that it reads.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "jdomparser.h"
#include "jdomparsertest.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

// --- Files

/// A directory of its own for each test, gone after it.
class JDomParserFile : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "jdomparser_test_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr) << name;
        mDirectory = name;
        ASSERT_EQ(chmod(name.c_str(), 0755), 0); // reachable for a user without rights, too
        alarm(kDeadlineSeconds);                 // a read that waits ends the test program
    }

    void TearDown() override
    {
        alarm(0);
        if (!mDirectory.empty())
            std::filesystem::remove_all(mDirectory);
    }

    [[nodiscard]] std::string path(const std::string& name) const
    {
        return mDirectory + "/" + name;
    }

    [[nodiscard]] std::string fileWith(const std::string& name, std::string_view content) const
    {
        std::ofstream file{path(name), std::ios::binary};
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        file.close();
        EXPECT_TRUE(file.good()) << path(name);
        return path(name);
    }

    JValue parseFile(const std::string& file) { return mParser.parseFile(file); }

    void expectFileRefused(const std::string& file, const std::string& what)
    {
        const JValue value = parseFile(file);
        EXPECT_FALSE(value.isValid()) << what << " was read as " << value.stringify();
        EXPECT_NE(mParser.errorText(), "") << what;
        EXPECT_LE(mParser.errorText().size(), JDomParser::kMaxErrorBytes) << what;
    }

    static constexpr unsigned int kDeadlineSeconds = 60;

    std::string mDirectory;
    JDomParser mParser{JSchema::acceptAll()};
};

/// Takes root's rights from the process for a while, so that the permission bits count.
class WithoutRights
{
public:
    WithoutRights()
    {
        if (geteuid() != 0)
            return;
        mTaken = setegid(kNobody) == 0 && seteuid(kNobody) == 0;
        EXPECT_TRUE(mTaken);
    }
    ~WithoutRights()
    {
        if (!mTaken)
            return;
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_EQ(setegid(0), 0);
        EXPECT_EQ(prctl(PR_SET_DUMPABLE, 1),
                  0); // a leak check at exit needs what seteuid switched off
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    static constexpr unsigned int kNobody = 65534;
    bool mTaken = false;
};

/// A string as a JSON text of that many bytes.
std::string textOfSize(std::size_t bytes)
{
    return "\"" + std::string(bytes - 2, 'x') + "\"";
}

TEST_F(JDomParserFile, IsReadWhole)
{
    const std::string file = fileWith("good.json", "{\"a\": [1, \"ä\\u0000\"]}\n");
    EXPECT_EQ(parseFile(file).stringify(), R"({"a":[1,"ä\u0000"]})");
    EXPECT_EQ(mParser.errorText(), "");
}

TEST_F(JDomParserFile, MayHoldAnyValue)
{
    EXPECT_EQ(parseFile(fileWith("array", "[1,2]\n")).stringify(), "[1,2]");
    EXPECT_EQ(parseFile(fileWith("number", "12")), JValue{12});
    EXPECT_EQ(parseFile(fileWith("string", R"("x")")), JValue{"x"});
    EXPECT_TRUE(parseFile(fileWith("null", "null\n")).isNull());
    EXPECT_EQ(mParser.errorText(), "");
}

TEST_F(JDomParserFile, IsHeldToTheSameRulesAsAText)
{
    const Row rows[] = {
        // clang-format off
        // what             content
        {"empty",           ""},
        {"blanks",          " \n"},
        {"invalid",         "{\"a\":}"},
        {"truncated",       "{\"a\":1"},
        {"two values",      "{}\n{}\n"},
        {"comment",         "// a\n{}"},
        {"not UTF-8",       "\"\xe4\""},
        {"BOM",             "\xef\xbb\xbf{}"},
        {"NUL at the end",  "{}\0"sv},
        {"NUL in a key",    R"({"a\u0000":1})"},
        {"binary",          "\x7f" "ELF\x02\x01\x01\0\0"sv},
        // clang-format on
    };
    for (const Row& row : rows)
        expectFileRefused(fileWith("file", row.text), row.what);
    expectFileRefused(fileWith("deep", nested(kMax + 1, "[", "", "]")), "too deep");
    EXPECT_TRUE(parseFile(fileWith("deep", nested(kMax, "[", "", "]"))).isArray());
}

TEST_F(JDomParserFile, OfOneMebibyteIsAcceptedAndOneByteMoreRefused)
{
    EXPECT_EQ(JDomParser::kMaxFileBytes, 1048576U);
    EXPECT_EQ(parseFile(fileWith("limit", textOfSize(1048576))).asString().size(), 1048574U);
    EXPECT_EQ(mParser.errorText(), "");
    expectFileRefused(fileWith("above", textOfSize(1048577)), "one byte more");
    // Blanks count as well; a file that is cut at the limit would be a valid text here.
    EXPECT_TRUE(parseFile(fileWith("blanks", "{}" + std::string(1048574, ' '))).isObject());
    expectFileRefused(fileWith("blanks", "{}" + std::string(1048575, ' ')), "one blank more");
    expectFileRefused(fileWith("large", "{}" + std::string(3 * 1048576, ' ')), "three times that");
}

TEST_F(JDomParserFile, ThatIsMissingIsRefused)
{
    expectFileRefused(path("missing.json"), "missing file");
    expectFileRefused(path("missing/file.json"), "missing directory");
    expectFileRefused("", "empty path");
    expectFileRefused(fileWith("file", "{}") + "/", "file as a directory");
    expectFileRefused(path(std::string(10000, 'x')), "path too long");
}

TEST_F(JDomParserFile, PathsWithANulCharacterNameNoFile)
{
    const std::string file = fileWith("good.json", "{}");
    expectFileRefused(file + "\0"s, "NUL at the end");
    expectFileRefused(file + "\0.bak"s, "NUL in the middle");
}

TEST_F(JDomParserFile, IsFoundThroughASymlink)
{
    const std::string file = fileWith("good.json", "[1]");
    ASSERT_EQ(symlink(file.c_str(), path("link").c_str()), 0);
    EXPECT_EQ(parseFile(path("link")).stringify(), "[1]");

    ASSERT_EQ(symlink("nowhere", path("dangling").c_str()), 0);
    expectFileRefused(path("dangling"), "symlink to nothing");
    ASSERT_EQ(symlink("loop", path("loop").c_str()), 0);
    expectFileRefused(path("loop"), "symlink to itself");
}

TEST_F(JDomParserFile, ThatIsADirectoryIsRefused)
{
    expectFileRefused(mDirectory, "directory");
    expectFileRefused(mDirectory + "/", "directory with a slash");
    ASSERT_EQ(symlink(mDirectory.c_str(), path("link").c_str()), 0);
    expectFileRefused(path("link"), "symlink to a directory");
}

TEST_F(JDomParserFile, ThatIsAFifoIsRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    expectFileRefused(path("fifo"), "FIFO");
    ASSERT_EQ(symlink("fifo", path("link").c_str()), 0);
    expectFileRefused(path("link"), "symlink to a FIFO");
}

TEST_F(JDomParserFile, ThatIsAFifoIsRefusedEvenWithAValueWaitingInIt)
{
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    const int both = open(path("fifo").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(both, 0);
    ASSERT_EQ(write(both, "{}", 2), 2);
    expectFileRefused(path("fifo"), "FIFO with a value");
    char left[3] = {};
    EXPECT_EQ(read(both, left, sizeof left), 2) << "nothing was taken from it";
    close(both);
}

TEST_F(JDomParserFile, IsNotEvenOpenedUnlessItIsRegular)
{
    const std::string file = fileWith("file", "{}");
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    ASSERT_EQ(mkdir(path("directory").c_str(), 0755), 0);

    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(watch, 0);
    for (const std::string& watched : {file, path("fifo"), path("directory")})
        ASSERT_GE(inotify_add_watch(watch, watched.c_str(), IN_OPEN), 0) << watched;
    std::array<char, 4096> events{};
    expectFileRefused(path("fifo"), "FIFO");
    expectFileRefused(path("directory"), "directory");
    EXPECT_LT(read(watch, events.data(), events.size()), 0) << "something was opened";
    EXPECT_TRUE(parseFile(file).isObject());
    EXPECT_GT(read(watch, events.data(), events.size()), 0) << "an opening would not be seen";
    close(watch);
}

TEST_F(JDomParserFile, ThatIsADeviceIsRefused)
{
    expectFileRefused("/dev/null", "/dev/null");
    expectFileRefused("/dev/zero", "/dev/zero");
}

TEST_F(JDomParserFile, ThatMustNotBeReadIsRefused)
{
    const std::string readable = fileWith("readable.json", "{}");
    const std::string unreadable = fileWith("unreadable.json", "{}");
    ASSERT_EQ(mkdir(path("closed").c_str(), 0755), 0);
    const std::string inside = fileWith("closed/file.json", "{}");
    ASSERT_EQ(chmod(readable.c_str(), 0444), 0);
    ASSERT_EQ(chmod(unreadable.c_str(), 0000), 0);
    ASSERT_EQ(chmod(path("closed").c_str(), 0000), 0);
    {
        const WithoutRights withoutRights;
        EXPECT_TRUE(parseFile(readable).isObject()) << mParser.errorText();
        expectFileRefused(unreadable, "no right to read");
        expectFileRefused(inside, "no right to enter the directory");
    }
    ASSERT_EQ(chmod(path("closed").c_str(), 0755), 0); // to be removed
}

TEST_F(JDomParserFile, LeavesNoFileOpen)
{
    const auto openFiles = [] {
        const std::filesystem::directory_iterator entries{"/proc/self/fd"};
        return std::distance(begin(entries), end(entries));
    };
    const std::string good = fileWith("good", "{}");
    const std::string bad = fileWith("bad", "{");
    const std::string large = fileWith("large", textOfSize(1048577));
    const auto before = openFiles();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(parseFile(good).isValid());
        expectFileRefused(bad, "invalid");
        expectFileRefused(large, "too large");
        expectFileRefused(mDirectory, "directory");
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(JDomParserFile, AfterAFailureTheNextOneIsRead)
{
    expectFileRefused(path("missing"), "missing file");
    EXPECT_TRUE(parseFile(fileWith("good", "{}")).isObject());
    EXPECT_EQ(mParser.errorText(), "");
    expectFileRefused(fileWith("bad", "{"), "invalid");
    EXPECT_TRUE(mParser.parse("1").isNumber());
    EXPECT_EQ(mParser.errorText(), "");
}

} // namespace
