// SPDX-License-Identifier: Apache-2.0
// What may come next in a line of the shell, by the tables of operations, script lines and shell
// commands and by the library's catalogue. Candidates are made as JSON, in quotes where it wants
// them; a word of the short form sheds the quotes that it does not need.
#include "completion.h"

#include <algorithm>
#include <span>

#include "jsonprefix.h"
#include "kepcatalogue.h"
#include "names.h"
#include "operations.h"
#include "scriptgrammar.h"
#include "shellcommands.h"
#include "shortform.h"

namespace
{

using Levels = std::span<const JsonLevel>;

constexpr ObjectForm kFaultForms[] = {ObjectForm::CardFault, ObjectForm::MiddlewareFault,
                                      ObjectForm::GpioFault, ObjectForm::SubMicroFault};

void add(Names& names, const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

Names quoted(const Names& names)
{
    Names all;
    for (const std::string& name : names)
        all.push_back(JValue{name}.stringify());
    return all;
}

// --- Arguments of operations

/// The outputs that an operation does something with.
Names outputsFor(const std::string& operation)
{
    Names all;
    for (const kepSoundOutput& output : kepCatalogue::soundOutputs()) {
        const bool fits = operation == "setSoundOutput"    ? output.selectable
                          : operation == "setOutputVolume" ? output.hasVolume
                          : operation == "setOutputMute"   ? output.hasMute
                                                           : true;
        if (fits)
            for (const char* name : output.names)
                add(all, name);
    }
    return all;
}

Names sinksOf(const std::string& source)
{
    Names all;
    for (const kepInputSource& input : kepCatalogue::inputSources())
        if (source == input.source)
            for (const char* sink : input.sinks)
                add(all, sink);
    return all;
}

Names categoriesFor(const std::string& operation)
{
    const bool asks = operation == "getSettings";
    Names all;
    if (asks)
        for (const kepQuery& query : kepCatalogue::queries())
            add(all, query.name);
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories())
        if (asks ? category.stored : category.supported)
            add(all, category.name);
    return all;
}

/// What the argument of that index may be; `earlier` are those before it.
Names argumentNames(const Operation& operation, std::size_t index, const Names& earlier)
{
    if (index >= operation.argumentCount)
        return {};
    Names sources;
    switch (operation.arguments[index].kind) {
    case ArgumentKind::SoundOutput:
        return quoted(outputsFor(operation.name));
    case ArgumentKind::Source:
        for (const kepInputSource& input : kepCatalogue::inputSources())
            add(sources, input.source);
        return quoted(sources);
    case ArgumentKind::Sink:
        return quoted(sinksOf(index > 0 && index <= earlier.size() ? earlier[index - 1] : ""));
    case ArgumentKind::Switch:
        return {"true", "false"};
    case ArgumentKind::Category:
        return quoted(categoriesFor(operation.name));
    case ArgumentKind::Payload:
        return {"{"};
    default:
        return {};
    }
}

// --- Payloads

using Keys = std::vector<kepKey>;

void append(Keys& keys, const kepList<kepKey>& more)
{
    keys.insert(keys.end(), more.begin(), more.end());
}

Keys keysOfSettings(const std::string& name)
{
    Keys keys;
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories()) {
        if (name != category.name)
            continue;
        append(keys, category.keys);
        if (category.takesQualityKeys)
            for (const kepQualityKeys& readers : kepCatalogue::soundQualityKeys())
                append(keys, readers.keys);
    }
    return keys;
}

Keys keysOfQuery(const std::string& name)
{
    Keys keys;
    for (const kepQuery& query : kepCatalogue::queries())
        if (name == query.name)
            append(keys, query.keys);
    return keys;
}

Keys keysOfAttribute(const std::string& member)
{
    Keys keys;
    if (member.empty())
        append(keys, kepCatalogue::qualityAttributeKeys());
    else if (member == "pipelineInfo")
        append(keys, kepCatalogue::pipelineInfoKeys());
    else if (member == "categoryInfo")
        append(keys, kepCatalogue::categoryInfoKeys());
    return keys;
}

/// The keys of an object in a payload: of the payload itself, or of its member of that name.
Keys payloadKeys(const std::string& operation, const Names& earlier, const std::string& member)
{
    const std::string category = earlier.empty() ? "" : earlier.front();
    Keys keys;
    if (operation == "setQualityAttribute")
        return keysOfAttribute(member);
    if (!member.empty())
        return {};
    if (operation == "connectInput")
        append(keys, kepCatalogue::pipelineAttributeKeys());
    return operation == "setSettings"   ? keysOfSettings(category)
           : operation == "getSettings" ? keysOfQuery(category)
                                        : keys;
}

Names payloadValues(const Keys& keys, const std::string& name, bool inArray)
{
    Names values;
    for (const kepKey& key : keys) {
        if (name != key.name)
            continue;
        for (const char* value : key.values)
            add(values, JValue{value}.stringify());
        if (key.type == KEP_VALUE_BOOL)
            values.insert(values.end(), {"true", "false"});
        if (key.type == KEP_VALUE_ARRAY && !inArray)
            values = {"["};
        if (key.type == KEP_VALUE_OBJECT)
            values = {"{"};
    }
    if (name == "requestType")
        for (const kepRequestType& type : kepCatalogue::requestTypes())
            add(values, JValue{type.name}.stringify());
    return values;
}

Names payloadNames(const Operation& operation, const Names& earlier, Levels levels)
{
    const JsonLevel& level = levels.back();
    const bool inArray = level.array;
    if (inArray)
        levels = levels.first(levels.size() - 1);
    if (levels.empty() || levels.size() > 2)
        return {};
    const Keys keys =
        payloadKeys(operation.name, earlier, levels.size() == 2 ? levels.front().key : "");
    if (level.next == JsonNext::Value)
        return payloadValues(keys, levels.back().key, inArray);
    Names names;
    for (const kepKey& key : keys)
        add(names, JValue{key.name}.stringify());
    return names;
}

// --- Script lines

/// What a key that has that value may be followed by; `object` is where it stands.
Names valueNames(const KeyRow& key, const JsonLevel& object)
{
    const auto card = object.texts.find("card");
    switch (key.kind) {
    case ValueKind::True:
        return {"true"};
    case ValueKind::Texts:
    case ValueKind::Arguments:
        return {"["};
    case ValueKind::Object:
    case ValueKind::Levels:
        return {"{"};
    case ValueKind::LogLevel:
        return valuesOf(key.kind);
    case ValueKind::Element:
        return quoted(names::elements(card != object.texts.end() ? card->second : ""));
    default:
        return quoted(valuesOf(key.kind));
    }
}

/// The keys of an object of one of these forms, or the values of the key that it is at.
Names memberNames(std::span<const ObjectForm> forms, const JsonLevel& level)
{
    Names names;
    for (const ObjectForm form : forms) {
        for (const KeyRow& key : keyRows()) {
            if (key.form != form)
                continue;
            if (level.next == JsonNext::Key)
                add(names, JValue{key.key}.stringify());
            else if (level.key == key.key && names.empty())
                names = valueNames(key, level);
        }
    }
    return names;
}

/// What an injection can be, by what it names so far.
std::vector<ObjectForm> faultForms(const JsonLevel& level)
{
    for (const ObjectForm form : kFaultForms)
        for (const KeyRow& key : keyRows())
            if (key.form == form && form != ObjectForm::CardFault && key.required &&
                key.kind >= ValueKind::Operation && level.texts.contains(key.key))
                return {form};
    for (const char* key : {"control", "card", "stage"})
        if (level.texts.contains(key))
            return {ObjectForm::CardFault};
    return {std::begin(kFaultForms), std::end(kFaultForms)};
}

Names settingNames(Levels levels)
{
    constexpr ObjectForm kSettings[] = {ObjectForm::Settings};
    constexpr ObjectForm kAmplifier[] = {ObjectForm::AmplifierState};
    if (levels.size() == 1)
        return memberNames(kSettings, levels.front());
    if (levels.size() == 2 && levels.front().key == "amplifierState")
        return memberNames(kAmplifier, levels.back());
    if (levels.size() == 2 && levels.front().key == "gpio" && levels.back().next == JsonNext::Key)
        return quoted(names::inputLines());
    return {};
}

Names faultNames(Levels levels)
{
    return levels.size() == 1 ? memberNames(faultForms(levels.front()), levels.front()) : Names{};
}

Names callNames(const JsonLevel& line, Levels levels)
{
    const auto call = line.texts.find("call");
    const Operation* operation = call != line.texts.end() ? findOperation(call->second) : nullptr;
    if (operation == nullptr || !levels.front().array)
        return {};
    const JsonLevel& arguments = levels.front();
    return levels.size() == 1 ? argumentNames(*operation, arguments.index, arguments.elements)
                              : payloadNames(*operation, arguments.elements, levels.subspan(1));
}

Names lineKeys(const JsonLevel& line)
{
    if (line.texts.contains("call"))
        return {"\"args\""};
    Names keys;
    for (const LineKind& kind : lineKinds())
        add(keys, JValue{kind.key}.stringify());
    return keys;
}

/// Behind the key of a line of some kind.
Names kindNames(const std::string& key, const JsonLevel& line, Levels levels)
{
    if (levels.empty()) {
        for (const LineKind& kind : lineKinds())
            if (key == kind.key)
                return memberNames({&kind.form, 1}, line);
        return key == "args" ? Names{"["} : Names{};
    }
    return key == "args"     ? callNames(line, levels)
           : key == "set"    ? settingNames(levels)
           : key == "inject" ? faultNames(levels)
                             : Names{};
}

Names lineNames(const JsonPrefix& prefix)
{
    const Levels levels = prefix.levels;
    if (levels.empty())
        return {};
    return levels.size() == 1 && prefix.next == JsonNext::Key
               ? lineKeys(levels.front())
               : kindNames(levels.front().key, levels.front(), levels.subspan(1));
}

// --- Typed lines

/// The candidates that begin with what is typed; in quotes where `json`, otherwise without them as
/// far as they are not needed.
Completion matching(const Names& names, const std::string& partial, bool json)
{
    const bool keepsQuotes = json || partial.starts_with('"');
    Completion completion{.typed = partial.size(), .candidates = {}, .suffix = ""};
    for (const std::string& name : names) {
        const bool needsQuotes = name.find_first_of(" \\") != std::string::npos;
        const bool bare = !keepsQuotes && !needsQuotes && name.starts_with('"') && name.size() > 2;
        const std::string shown = bare ? name.substr(1, name.size() - 2) : name;
        if (shown.starts_with(partial))
            completion.candidates.push_back(shown);
    }
    const bool opens =
        completion.candidates.size() == 1 && completion.candidates.front().find_first_of("{[") == 0;
    completion.suffix = json || opens ? "" : " ";
    return completion;
}

Completion matchingJson(const Names& names, const JsonPrefix& prefix)
{
    if (prefix.next != JsonNext::Key && prefix.next != JsonNext::Value)
        return {};
    Completion completion = matching(names, prefix.partial, /*json=*/true);
    if (prefix.next == JsonNext::Key)
        completion.suffix = ": ";
    return completion;
}

Names textsOf(std::span<const TypedWord> words)
{
    Names texts;
    for (const TypedWord& word : words) {
        const JsonPrefix value = jsonPrefixOf("[" + word.text + ",");
        texts.push_back(word.text.starts_with('"') && !value.levels.empty()
                            ? value.levels.front().elements.front()
                            : word.text);
    }
    return texts;
}

Completion firstWord(const std::string& partial)
{
    Names names;
    if (partial.starts_with(':')) {
        for (const ShellCommand& command : shellCommands())
            names.push_back(std::string{":"} + command.name);
        return matching(names, partial, /*json=*/false);
    }
    for (const Operation& operation : operationRows())
        names.emplace_back(operation.name);
    for (const LineKind& kind : lineKinds())
        if (kind.form != ObjectForm::CallLine)
            names.emplace_back(kind.key);
    return matching(names, partial, /*json=*/false);
}

Completion argumentOf(const Operation& operation, std::span<const TypedWord> words,
                      const std::string& partial)
{
    const Names earlier = textsOf(words.subspan(1));
    if (!partial.starts_with('{'))
        return matching(argumentNames(operation, earlier.size(), earlier), partial,
                        /*json=*/false);
    const JsonPrefix prefix = jsonPrefixOf(partial);
    if (prefix.levels.empty() || earlier.size() >= operation.argumentCount ||
        operation.arguments[earlier.size()].kind != ArgumentKind::Payload)
        return {};
    return matchingJson(payloadNames(operation, earlier, prefix.levels), prefix);
}

/// Behind "set" or "inject": an object, or keys and values in turn.
Completion memberOf(const std::string& kind, std::span<const TypedWord> words,
                    const std::string& partial)
{
    if (partial.starts_with('{')) {
        const JsonPrefix prefix = jsonPrefixOf(partial);
        return matchingJson(kindNames(kind, {}, prefix.levels), prefix);
    }
    const Names earlier = textsOf(words.subspan(1));
    JsonLevel object;
    for (std::size_t i = 0; i + 1 < earlier.size(); i += 2)
        object.texts[earlier[i]] = earlier[i + 1];
    object.next = earlier.size() % 2 == 0 ? JsonNext::Key : JsonNext::Value;
    object.key = earlier.empty() ? "" : earlier.back();
    return matching(kindNames(kind, {}, {&object, 1}), partial, /*json=*/false);
}

} // namespace

Completion completionOf(const std::string& typed)
{
    std::vector<TypedWord> words = wordsOf(typed);
    std::string partial;
    if (!words.empty() && (!words.back().closed || (typed.back() != ' ' && typed.back() != '\t'))) {
        partial = words.back().text;
        words.pop_back();
    }
    if (words.empty() && partial.starts_with('{')) {
        const JsonPrefix prefix = jsonPrefixOf(partial);
        return matchingJson(lineNames(prefix), prefix);
    }
    if (words.empty())
        return firstWord(partial);
    const std::string& first = words.front().text;
    if (const ShellCommand* command = findShellCommand(first))
        return words.size() == 1 ? matching(command->arguments(), partial, /*json=*/false)
                                 : Completion{};
    if (const Operation* operation = findOperation(first))
        return argumentOf(*operation, words, partial);
    for (const LineKind& kind : lineKinds())
        if (first == kind.key && kind.form != ObjectForm::CallLine)
            return memberOf(first, words, partial);
    return {};
}
