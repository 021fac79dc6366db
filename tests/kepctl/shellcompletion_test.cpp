// SPDX-License-Identifier: Apache-2.0
// The completion files, as bash and zsh take them.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"
#include "options.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAre;

namespace
{

const std::filesystem::path kShare =
    std::filesystem::path{kProgram}.parent_path().parent_path() / "share";
const std::string kBashFile = kShare / "bash-completion" / "completions" / "kepctl";
const std::string kZshFile = kShare / "zsh" / "site-functions" / "_kepctl";

class ShellCompletion : public Kepctl
{
protected:
    /// What bash offers for the last of these words, a = between two being one.
    [[nodiscard]] Texts offered(const Texts& words) const
    {
        std::string array;
        for (const std::string& word : words)
            array += " '" + word + "'";
        const std::string code = "source '" + kBashFile + "' || exit; COMP_WORDS=(" + array +
                                 "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kepctl; "
                                 "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done";
        const Execution outcome = execution({"/bin/bash", "--norc", "-c", code});
        EXPECT_EQ(outcome.errors, "");
        return linesOf(outcome.output);
    }
};

} // namespace

TEST_F(ShellCompletion, BashKnowsTheCommands)
{
    EXPECT_THAT(offered({"kepctl", ""}),
                IsSupersetOf({"run", "shell", "env", "card", "list", "help", "--version"}));
    EXPECT_THAT(offered({"kepctl", "sh"}), ElementsAre("shell"));
}

TEST_F(ShellCompletion, BashKnowsTheOptionsOfEachCommand)
{
    for (const auto& [command, bit] :
         {std::pair{"run", kRun}, std::pair{"shell", kShell}, std::pair{"list", kList}}) {
        Texts options;
        for (const OptionRow& option : optionRows())
            if ((option.commands & bit) != 0)
                options.push_back(std::string{"--"} + option.name);
        EXPECT_EQ(offered({"kepctl", command, "--"}), options) << command;
    }
}

TEST_F(ShellCompletion, BashKnowsTheValuesOfOptions)
{
    EXPECT_THAT(offered({"kepctl", "run", "--backend", ""}), ElementsAre("TV", "ALSA"));
    EXPECT_THAT(offered({"kepctl", "run", "--backend", "=", "A"}), ElementsAre("ALSA"));
    EXPECT_THAT(offered({"kepctl", "run", "--backend", "="}), ElementsAre("TV", "ALSA"));
    EXPECT_THAT(offered({"kepctl", "list", "--format", ""}), Contains("json"));
    EXPECT_THAT(offered({"kepctl", "run", "--format", ""}), UnorderedElementsAre("text", "jsonl"));
    EXPECT_THAT(offered({"kepctl", "run", "--only", "request,c"}), ElementsAre("request,control"));
}

TEST_F(ShellCompletion, BashKnowsWordsAndFiles)
{
    EXPECT_THAT(offered({"kepctl", "list", "op"}), ElementsAre("operations"));
    EXPECT_THAT(offered({"kepctl", "help", "scr"}), ElementsAre("script"));
    EXPECT_THAT(offered({"kepctl", "card", ""}), Contains("dump"));
    const std::string top = directory();
    std::filesystem::create_directory(directory() / "folder");
    (void)file("a b.jsonl", "");
    (void)file("b.txt", "");
    EXPECT_THAT(
        offered({"kepctl", "run", "--strict", top + "/"}),
        AllOf(IsSupersetOf({top + "/a b.jsonl", top + "/folder"}), Not(Contains(top + "/b.txt"))));
    EXPECT_THAT(offered({"kepctl", "run", "--config", top + "/"}), Contains(top + "/folder"));
    EXPECT_THAT(offered({"kepctl", "run", "--card", top + "/b"}), ElementsAre(top + "/b.txt"));
}

TEST_F(ShellCompletion, ZshCompletesByItsFile)
{
    const std::string zsh = "/bin/zsh";
    if (!std::filesystem::exists(zsh))
        GTEST_SKIP() << "no zsh here";
    setenv("HOME", directory().c_str(), 1);
    Terminal terminal{{zsh, "-f", "-i"}, ""};
    terminal.type("kepctl() { print \"typed: $*\" }; autoload -U compinit && compinit -u -D && "
                  "source '" +
                      kZshFile + "' && echo re''ady\r",
                  "ready");
    terminal.type("kepctl she\t--expl\t--backend AL\t--col\talw\t\r",
                  "typed: shell --explain --backend ALSA --color=always");
    terminal.type("kepctl list oper\t\r", "typed: list operations");
}
