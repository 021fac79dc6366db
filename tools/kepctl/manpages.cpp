// SPDX-License-Identifier: Apache-2.0
// The manual pages, in mdoc. Texts come from the tables of commands, options, script lines, events,
// operations and keys; only what holds a page together stands here.
#include "manpages.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "commands.h"
#include "configurationkeys.h"
#include "environmentvariables.h"
#include "help.h"
#include "kepcatalogue.h"
#include "listcommand.h"
#include "operations.h"
#include "resultwords.h"
#include "scriptgrammar.h"
#include "traceevents.h"

namespace
{

constexpr std::size_t kWidth = 78; // of a source line

std::string upper(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

std::string lower(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

// --- Source lines

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
    return text;
}

std::string escaped(const std::string& text)
{
    return replaced(text, "\\", "\\e");
}

bool endsSentence(const std::string& word)
{
    return word.size() > 1 && (word.back() == '.' || word.back() == '?');
}

/// Running text: a line for each sentence, and no long ones. A line must not begin like a request.
std::string prose(const std::string& text)
{
    std::string lines;
    std::string line;
    const auto flush = [&] {
        if (!line.empty())
            lines += (line.front() == '.' || line.front() == '\'' ? "\\&" : "") + line + "\n";
        line.clear();
    };
    std::string word;
    for (const char letter : escaped(text) + " ") {
        if (letter != ' ' && letter != '\n') {
            word += letter;
            continue;
        }
        if (word.empty())
            continue;
        if (!line.empty() && line.size() + 1 + word.size() > kWidth)
            flush();
        line += (line.empty() ? "" : " ") + word;
        if (endsSentence(word))
            flush();
        word.clear();
    }
    flush();
    return lines;
}

/// The same as a sentence: tables hold half ones.
std::string sentence(std::string text)
{
    if (text.empty())
        return "";
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    if (text.back() != '.')
        text += '.';
    return prose(text);
}

/// A line that is shown as it stands.
std::string display(const std::string& line)
{
    return ".Dl \"" + replaced(escaped(line), "\"", "\\(dq") + "\"\n";
}

std::string displayAll(const std::string& text)
{
    std::string lines = ".Bd -literal -offset indent\n";
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = escaped(text.substr(start, end - start));
        lines += (!line.empty() && line.front() == '.' ? "\\&" : "") + line + "\n";
        start = end + 1;
    }
    return lines + ".Ed\n";
}

std::string section(const std::string& title)
{
    return ".Sh " + title + "\n";
}

std::string listOf(const std::string& items)
{
    return items.empty() ? "" : ".Bl -tag -width Ds\n" + items + ".El\n";
}

/// An item whose head is a macro with its arguments, such as "Fl -time".
std::string item(const std::string& head, const std::string& text)
{
    return ".It " + head + "\n" + text;
}

/// A literal in the head of an item: none of its words is a macro.
std::string literal(const std::string& text)
{
    return "Ql \"" + replaced(escaped(text), "\"", "\\(dq") + "\"";
}

// --- Pages

struct Page {
    const char* name;
    char section;
    const char* summary;
    std::string (*body)();
};

std::string header(const std::string& name, char section, const std::string& summary)
{
    return std::string{".\\\" SPDX-License-Identifier: Apache-2.0\n"
                       ".\\\" Made by kepctl from the tables of its help.\n"} +
           ".Dd " KEP_DATE "\n.Dt " + upper(name) + " " + section + "\n.Os\n.Sh NAME\n.Nm " + name +
           "\n.Nd " + summary + "\n";
}

/// In the order of sections and names that the manual pages keep.
std::string seeAlso(const std::string& page)
{
    struct Row {
        const char* name;
        char section;
    };
    constexpr Row kRows[] = {
        {"kep-conformance", '1'}, {"kepctl", '1'},          {"libkep", '3'},
        {"device-cap.json", '5'}, {"kep-config.json", '5'}, {"kepctl-script", '5'},
        {"kepctl-trace", '5'},    {"kep-porting", '7'},
    };
    std::string lines = section("SEE ALSO");
    for (const Row& row : kRows)
        if (page != row.name)
            lines += std::string{".Xr "} + row.name + " " + row.section + " ,\n";
    return lines.substr(0, lines.size() - 3) + "\n";
}

// --- Section 1

/// A word of a usage line: "[OPTION]..." or "SCRIPT..." or "dump".
std::string argumentMacro(std::string word)
{
    const bool optional = word.front() == '[';
    const bool several = word.ends_with("...");
    std::string name;
    for (const char letter : word)
        if (std::isalpha(static_cast<unsigned char>(letter)) != 0)
            name += letter;
    const bool isName = name == upper(name);
    return std::string{"."} + (optional ? "Op " : "") + (isName ? "Ar " : "Cm ") + lower(name) +
           (several ? " ..." : "") + "\n";
}

std::string synopsisOf(const Command& command)
{
    std::string lines = std::string{".Nm kepctl\n.Cm "} + command.name + "\n";
    std::string word;
    for (const char letter : std::string{command.arguments} + " ") {
        if (letter != ' ')
            word += letter;
        else if (!word.empty())
            lines += argumentMacro(std::exchange(word, ""));
    }
    return lines;
}

std::string optionsOf(CommandSet command)
{
    std::string items;
    for (const OptionRow& option : optionRows())
        if ((option.commands & command) != 0)
            items +=
                item(std::string{"Fl -"} + option.name +
                         (option.argument != nullptr ? std::string{" Ar "} + option.argument : ""),
                     sentence(option.help));
    return listOf(items);
}

std::string exitStatusOf(CommandSet command)
{
    std::string items;
    for (const ExitMeaning& row : exitMeanings())
        if ((row.commands & command) != 0)
            items += item(std::to_string(row.status), sentence(row.meaning));
    return section("EXIT STATUS") + listOf(items);
}

const char* meaningOf(const std::string& variable)
{
    const auto* row =
        std::find_if(std::begin(kEnvironmentVariables), std::end(kEnvironmentVariables),
                     [&](const auto& each) { return variable == each.name; });
    return row->meaning;
}

std::string environmentOf(CommandSet command)
{
    std::string items;
    for (const EnvironmentVariable& variable : kEnvironmentVariables)
        if ((variable.commands & command) != 0)
            items += item(std::string{"Ev "} + variable.name, sentence(variable.meaning));
    return items.empty() ? "" : section("ENVIRONMENT") + listOf(items);
}

std::string commandPage(const Command& command)
{
    const std::string name = std::string{"kepctl-"} + command.name;
    std::string page = header(name, '1', command.summary) + section("SYNOPSIS") +
                       synopsisOf(command) + section("DESCRIPTION");
    page += sentence(command.summary);
    if (command.help != nullptr)
        page += ".Pp\n" + prose(command.help);
    if (command.bit == kList)
        page += ".Pp\n" + prose("WHAT is " + anyOf(listNames()) + ".");
    return page + ".Pp\nThe options are:\n" + optionsOf(command.bit) + environmentOf(command.bit) +
           exitStatusOf(command.bit) + seeAlso(name);
}

std::string kepctlPage()
{
    std::string commands;
    std::string synopsis;
    for (const Command& command : commandRows()) {
        synopsis += synopsisOf(command);
        commands += item(std::string{"Cm "} + command.name,
                         sentence(command.summary) + "See\n.Xr kepctl-" + command.name + " 1 .\n");
    }
    std::string variables;
    for (const EnvironmentVariable& variable : kEnvironmentVariables)
        variables += item(std::string{"Ev "} + variable.name, sentence(variable.meaning));
    return section("SYNOPSIS") + synopsis + section("DESCRIPTION") +
           prose("Loads the library as an audio policy service does, feeds it requests, runs the "
                 "main loop that its timers need, and shows what came out: results, driver writes, "
                 "middleware calls and log messages, in the order in which they happen. Unless it "
                 "is told otherwise, all of it happens on a virtual television.") +
           ".Pp\nThe commands are:\n" + listOf(commands) + ".Pp\nWithout a command:\n" +
           optionsOf(kNoCommand) + section("ENVIRONMENT") + listOf(variables) + exitStatusOf(kRun) +
           section("EXAMPLES") + prose("A request, and what it causes:") +
           display("echo '{\"call\": \"initialize\"}' | kepctl run --explain -") +
           prose("The virtual cards, from another program:") +
           display("eval \"$(kepctl env)\"; amixer -D hw:0 contents");
}

// --- Section 3

std::string resultItems(Answer answer)
{
    std::string items;
    for (const ResultCode& row : resultCodes())
        if (row.answer == answer)
            items +=
                item(std::to_string(row.code),
                     sentence(std::string{row.words} +
                              (row.operation != nullptr ? std::string{" (by "} + row.operation + ")"
                                                        : "")));
    return listOf(items);
}

std::string operationItems()
{
    std::string items;
    for (const Operation& operation : operationRows()) {
        std::string arguments;
        for (const Argument& argument : operation.takes())
            arguments += (arguments.empty() ? "" : ", ") + std::string{argument.name} + ": " +
                         typeOf(argument.kind);
        items += item(std::string{"Fn "} + operation.name,
                      sentence(operation.summary) +
                          (arguments.empty() ? "" : prose("Takes " + arguments + ".")));
    }
    return listOf(items);
}

std::string libraryPage()
{
    return section("SYNOPSIS") + ".In kepclient.h\n.Pp\n" +
           display("c++ -std=c++17 service.cpp $(pkg-config --cflags --libs kep glib-2.0)") +
           section("DESCRIPTION") +
           prose("Turns the requests of an audio policy service into writes of named control "
                 "elements and into calls of the television's audio middleware, or, with the "
                 "backend ALSA, into changes of any plain mixer. The one class that callers use "
                 "is kepClient; its operations are:") +
           operationItems() + ".Pp\n" +
           prose("Calls are made one at a time, initialize before all others. Timers run on the "
                 "default GLib main context, so the service runs its main loop. Nothing thrown "
                 "leaves the library.") +
           ".Pp\n" +
           prose("Names of outputs, sources and categories are listed by kepctl list, and by the "
                 "class kepCatalogue. A service adds a backend of its own with kepFactory.") +
           section("RETURN VALUES") + ".Fn initialize\nand\n.Fn deinitialize\nanswer\n" +
           resultItems(Answer::Status) + ".Pp\nEvery other operation answers\n" +
           resultItems(Answer::Code) + ".Pp\n" +
           prose("but for those that answer a volume or a JSON value. The reason of a failure is "
                 "in the log.") +
           section("ENVIRONMENT") +
           listOf(item("Ev KEP_CONFIG_DIR", sentence(meaningOf("KEP_CONFIG_DIR")))) +
           section("FILES") +
           listOf(
               item(std::string{"Pa "} + kepCatalogue::build().configurationFolder,
                    prose("The configuration files.")) +
               item("Pa share/doc/kep/examples",
                    prose("Below the prefix: services, a port, configurations.")) +
               item("Pa share/doc/kep/html/index.html",
                    prose("Below the prefix, where it was made: the reference and all pages, that "
                          "of the virtual television among them."))) +
           section("EXAMPLES") +
           displayAll("kepClient* audio = kepClient::getInstance();\n"
                      "if (audio->initialize() != KEP_STATUS_OK)\n"
                      "    return 1;\n"
                      "audio->setSoundOutput(\"tv_speaker\");\n"
                      "audio->setOutputVolume(\"tv_speaker\", audio->getDefaultVolume());\n");
}

// --- Section 5

std::string keysOfForm(ObjectForm form)
{
    std::string items;
    for (const KeyRow& key : keyRows())
        if (key.form == form)
            items +=
                item(literal(key.key),
                     sentence(typeOf(key) + (key.required ? ": " : ", optional: ") + key.help));
    return listOf(items);
}

std::string scriptPage()
{
    std::string page = section("DESCRIPTION") + prose(scriptIntroduction()) +
                       ".Pp\nThe lines are told apart by a key:\n";
    std::string kinds;
    for (const LineKind& kind : lineKinds()) {
        std::string text = sentence(kind.summary);
        for (const LineExample& example : lineExamples())
            if (kind.key == std::string{example.kind})
                text += display(example.line) + sentence(example.effect);
        kinds += item(literal(kind.key), text);
    }
    page += listOf(kinds);
    for (const FormTitle& form : formTitles())
        page += ".Ss Keys of " + replaced(form.title, "\"", "") + "\n" + keysOfForm(form.form);
    return page + ".Pp\n" + prose(injectionRule());
}

std::string tracePage()
{
    std::string events;
    for (const TraceEvent& event : kTraceEvents)
        events += item(literal(event.name), sentence(event.meaning) +
                                                prose(std::string{"Keys: "} + event.keys + ".") +
                                                display(event.example));
    return section("DESCRIPTION") + prose(traceIntroduction()) + ".Pp\nThe events are:\n" +
           listOf(events);
}

std::string configurationPage(const char* file)
{
    std::string keys;
    std::string members;
    const char* object = nullptr;
    for (const ConfigurationKey& row : kConfigurationKeys) {
        if (row.file != std::string{file})
            continue;
        object = row.section != nullptr ? row.section : kepCatalogue::build().socKey;
        keys += item(literal(row.key), sentence(std::string{row.type} + ": " + row.meaning));
        members +=
            (members.empty() ? "" : ",\n") + std::string{"    \""} + row.key + "\": " + row.example;
    }
    return section("DESCRIPTION") +
           prose(std::string{"One JSON object, read at the start from "} +
                 kepCatalogue::build().configurationFolder +
                 ", or from the folder that KEP_CONFIG_DIR names. The library reads the keys of "
                 "its member \"" +
                 object + "\"; all others may be there and are not looked at.") +
           ".Pp\nThe keys are:\n" + listOf(keys) + section("ENVIRONMENT") +
           listOf(item("Ev KEP_CONFIG_DIR", sentence(meaningOf("KEP_CONFIG_DIR")))) +
           section("FILES") +
           listOf(item(std::string{"Pa "} + kepCatalogue::build().configurationFolder + "/" + file,
                       "The file.\n")) +
           section("EXAMPLES") +
           displayAll(std::string{"{\n  \""} + object + "\": {\n" + members + "\n  }\n}\n");
}

constexpr Page kPages[] = {
    {"kepctl", '1', "play audio requests on a virtual television", &kepctlPage},
    {"libkep", '3', "audio hardware control of a television", &libraryPage},
    {"kepctl-script", '5', "request scripts of kepctl", &scriptPage},
    {"kepctl-trace", '5', "traces that kepctl writes", &tracePage},
    {"kep-config.json", '5', "which backend the audio library starts",
     [] { return configurationPage(kConfigFile); }},
    {"device-cap.json", '5', "card and controls of the backend for plain mixers",
     [] { return configurationPage(kCapabilityFile); }},
};

} // namespace

Names manPageNames()
{
    Names names;
    for (const Page& page : kPages)
        names.push_back(std::string{page.name} + "." + page.section);
    for (const Command& command : commandRows())
        names.push_back(std::string{"kepctl-"} + command.name + ".1");
    return names;
}

std::string manPage(const std::string& name)
{
    for (const Page& page : kPages)
        if (name == std::string{page.name} + "." + page.section)
            return header(page.name, page.section, page.summary) + page.body() + seeAlso(page.name);
    for (const Command& command : commandRows())
        if (name == std::string{"kepctl-"} + command.name + ".1")
            return commandPage(command);
    return "";
}
