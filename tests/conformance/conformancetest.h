// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of kep-conformance. The checks run in a child, which makes its
// television wrong first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "environment.h"
#include "faults.h"
#include "kepcatalogue.h"
#include "television.h"

using Texts = std::vector<std::string>;

struct Outcome {
    int status = -1;
    std::string output;
};

class Conformance : public testing::Test
{
protected:
    using Preparation = std::function<void()>;

    Conformance()
    {
        char name[] = "/tmp/conformanceXXXXXX";
        mFolder = mkdtemp(name);
        setenv("KEP_VIRTUALTV_STATE", (mFolder / "state").c_str(), 1);
        virtualtv::enter();
    }
    ~Conformance() override { std::filesystem::remove_all(mFolder); }

    /// Runs the checks as TAP, after `prepare` in the same process.
    Outcome tap(Texts arguments, const Preparation& prepare = {})
    {
        arguments.insert(arguments.begin(), "--tap");
        return run(std::move(arguments), prepare);
    }

    Outcome run(Texts arguments, const Preparation& prepare = {})
    {
        // A busy machine takes longer than the usual limit; the last one named counts.
        arguments.insert(arguments.begin(),
                         {"kep-conformance", "--config", mConfig, "--limit", "10000"});
        const pid_t child = fork();
        if (child == 0)
            inChild(arguments, prepare);
        return ended(child);
    }

    /// Runs the built program itself, with that library folder in front.
    Outcome program(const Texts& arguments, const std::string& libraries = "")
    {
        const pid_t child = fork();
        if (child == 0) {
            redirect();
            if (!libraries.empty())
                setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
            std::vector<char*> words = {const_cast<char*>(CONFORMANCE_PROGRAM),
                                        const_cast<char*>("--limit"), const_cast<char*>("10000")};
            for (const std::string& word : arguments)
                words.push_back(const_cast<char*>(word.c_str()));
            words.push_back(nullptr);
            execv(words.front(), words.data());
            _exit(127);
        }
        return ended(child);
    }

    /// One row of a card table.
    struct Row {
        std::string name;
        std::string type = "integer";
        std::size_t count = 0;
        long minimum = 0;
        long maximum = 0;
        std::string access = "rw";
        std::string interface = "mixer";
    };

    /// What the library needs of a card, and not a number more.
    static std::vector<Row> exactRows()
    {
        std::vector<Row> rows;
        for (const kepControlElement& element : kepCatalogue::controlElements()) {
            Row row{.name = element.name, .count = element.integers.size()};
            for (const kepControlInteger& integer : element.integers) {
                row.minimum = std::min<long>(row.minimum, integer.minimum);
                row.maximum = std::max<long>(row.maximum, integer.maximum);
                if (integer.numbers != nullptr)
                    for (const kepNamedNumber& named : *integer.numbers)
                        row.maximum = std::max<long>(row.maximum, named.number);
            }
            rows.push_back(row);
        }
        return rows;
    }

    /// Makes the card of the checks from these rows.
    void choose(const std::vector<Row>& rows) const
    {
        std::ostringstream table;
        table << R"({"card":"Desk","elements":[)";
        for (const Row& row : rows) {
            table << (&row == rows.data() ? "" : ",") << R"({"name":")" << row.name
                  << R"(","iface":")" << row.interface << R"(","type":")" << row.type
                  << R"(","count":)" << row.count << R"(,"access":")" << row.access << '"';
            if (row.type == "integer")
                table << R"(,"min":)" << row.minimum << R"(,"max":)" << row.maximum;
            table << "}";
        }
        table << "]}";
        std::ofstream{mFolder / "card.json"} << table.str();
        virtualtv::chooseCardFile(mFolder / "card.json");
    }

    /// The exact card with that element changed.
    void chooseWith(const std::string& name, const std::function<void(Row&)>& change) const
    {
        std::vector<Row> rows = exactRows();
        for (Row& row : rows)
            if (row.name == name)
                change(row);
        choose(rows);
    }

    std::string file(const std::string& name, const std::string& text) const
    {
        std::ofstream{mFolder / name} << text;
        return mFolder / name;
    }
    [[nodiscard]] std::string content(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream{mFolder / name}.rdbuf();
        return text.str();
    }
    [[nodiscard]] const std::filesystem::path& folder() const { return mFolder; }

    std::string mConfig = CONFORMANCE_CONFIG "/TV";

private:
    void redirect() const
    {
        const int output = open((mFolder / "output").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
    }

    [[noreturn]] void inChild(const Texts& arguments, const Preparation& prepare) const
    {
        redirect();
        if (prepare)
            prepare();
        void* module = dlopen(CONFORMANCE_MODULE, RTLD_NOW | RTLD_GLOBAL);
        auto* entry = module != nullptr
                          ? reinterpret_cast<int (*)(int, char**)>(dlsym(module, "kepConformance"))
                          : nullptr;
        if (entry == nullptr)
            fputs(dlerror(), stdout);
        std::vector<char*> words;
        for (const std::string& word : arguments)
            words.push_back(const_cast<char*>(word.c_str()));
        const int status =
            entry != nullptr ? entry(static_cast<int>(words.size()), words.data()) : 127;
        fflush(stdout);
        _exit(status);
    }

    [[nodiscard]] Outcome ended(pid_t child) const
    {
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                content("output")};
    }

    std::filesystem::path mFolder;
};

/// The sentences that stand behind failed claims.
inline Texts failures(const Outcome& outcome)
{
    Texts found;
    std::istringstream lines{outcome.output};
    for (std::string line, why; std::getline(lines, line);)
        if (line.starts_with("not ok") && std::getline(lines, why))
            found.push_back(line.substr(line.find(" - ") + 3) + ": " + why.substr(2));
    return found;
}

/// One failure and no other, in these words.
inline void expectOnly(const Outcome& outcome, const std::string& words)
{
    EXPECT_EQ(outcome.status, 1) << outcome.output;
    EXPECT_THAT(failures(outcome), testing::ElementsAre(words)) << outcome.output;
}

inline void plant(virtualtv::FaultPoint point, const std::string& name, int status,
                  unsigned delayMs = 0)
{
    virtualtv::inject({.point = point,
                       .name = name,
                       .card = "",
                       .status = status,
                       .times = {},
                       .delayMs = delayMs});
}
