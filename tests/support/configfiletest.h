// SPDX-License-Identifier: Apache-2.0
// What the tests of every configuration file share: all that can be in the place of one that cannot
// be used.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "asnobody.h"
#include "jdomparser.h"
#include "televisiontest.h"

class ConfigFileTest : public TelevisionTest
{
protected:
    /// `good` is the text of a file that can be used: an object with the member `key`.
    ConfigFileTest(std::string name, std::string key, std::string good)
        : mName(std::move(name)), mKey(std::move(key)), mGood(std::move(good))
    {
        connectLog();
    }

    [[nodiscard]] std::string path() const { return directory() / mName; }
    void write(const std::string& content) const { writeConfig(mName, content); }
    /// The good file, blown up to exactly that many bytes.
    [[nodiscard]] std::string padded(std::size_t bytes) const
    {
        return mGood + std::string(bytes - mGood.size(), ' ');
    }

    /// Loads the good file into what is kept from one load to the next, if anything is.
    virtual void loadGood() {}
    /// Loads, and expects the failure with that reason and nothing of what was read before it.
    virtual void expectUnusable(const std::string& what, const std::string& reason) = 0;

    void expectNoJsonObjectIsUnusable()
    {
        const struct {
            const char* what;
            std::string content;
        } rows[] = {
            {"empty", ""},
            {"blanks", " \n"},
            {"array", "[1, 2]"},
            {"array of the object", "[" + mGood + "]"},
            {"string", '"' + mKey + '"'},
            {"number", "15"},
            {"bool", "true"},
            {"null", "null"},
            {"no JSON", "card = default"},
            {"cut short", mGood.substr(0, mGood.size() - 1)},
            {"something after it", mGood + " x"},
            {"comma at the end", mGood.substr(0, mGood.size() - 1) + ",}"},
            {"larger than 1 MiB", padded((std::size_t{1} << 20) + 1)},
            {"nested 1000 deep", member(mKey, std::string(1000, '[') + std::string(1000, ']'))},
            {"no UTF-8", member(mKey, "\"\xff\"")},
            {"NUL bytes", std::string(64, '\0')},
        };
        for (const auto& row : rows) {
            write(mGood);
            loadGood();
            write(row.content);
            expectUnusable(row.what, parserReason());
        }
    }
    void expectMissingIsUnusable() { expectUnusable("missing", "No such file or directory"); }
    void expectFifoIsUnusableAtOnce()
    {
        alarm(30); // ends a process that waits for a writer
        ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
        expectUnusable("FIFO", parserReason());
    }
    void expectDirectoryIsUnusable()
    {
        std::filesystem::create_directory(path());
        expectUnusable("directory", parserReason());
    }
    void expectUnreadableIsUnusable()
    {
        write(mGood);
        ASSERT_EQ(chmod(path().c_str(), 0), 0);
        ASSERT_EQ(chmod(directory().c_str(), 0755), 0);
        const AsNobody nobody;
        expectUnusable("unreadable", "Permission denied");
    }

private:
    /// Why the platform's parser would not take the file.
    [[nodiscard]] std::string parserReason() const
    {
        JDomParser parser{JSchema::acceptAll()};
        parser.parseFile(path());
        return parser.errorText();
    }

    const std::string mName;
    const std::string mKey;
    const std::string mGood;
};
