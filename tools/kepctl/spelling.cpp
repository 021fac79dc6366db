// SPDX-License-Identifier: Apache-2.0
// What a request to the television backend names that there is not: the library's catalogue is
// asked.
#include "spelling.h"

#include <algorithm>

#include "kepcatalogue.h"
#include "names.h"

namespace
{

bool isOneOf(const std::string& name, const Names& names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string withHint(const std::string& sentence, const std::string& name, const Names& known,
                     const char* list)
{
    const std::string hint = didYouMean(name, known);
    return sentence + "; " +
           (!hint.empty() ? hint : std::string{"\"kepctl list "} + list + "\" shows them all");
}

std::string quoted(const std::string& text)
{
    return '"' + text + '"';
}

Names namesOf(const kepNames& names)
{
    return {names.begin(), names.end()};
}

// --- Outputs and inputs

const kepSoundOutput* findOutput(const std::string& name)
{
    for (const kepSoundOutput& output : kepCatalogue::soundOutputs())
        if (std::find(output.names.begin(), output.names.end(), name) != output.names.end())
            return &output;
    return nullptr;
}

const kepInputSource* findSource(const std::string& source, const std::string& sink = "")
{
    for (const kepInputSource& input : kepCatalogue::inputSources())
        if (source == input.source &&
            (sink.empty() ||
             std::find(input.sinks.begin(), input.sinks.end(), sink) != input.sinks.end()))
            return &input;
    return nullptr;
}

std::string checkOutput(const std::string& operation, const std::string& name)
{
    const kepSoundOutput* output = findOutput(name);
    if (output == nullptr)
        return withHint("there is no sound output " + quoted(name), name, names::soundOutputs(),
                        "outputs");
    if (operation == "setSoundOutput" && !output->selectable)
        return "the output " + quoted(name) + " cannot be selected";
    if (operation == "setOutputVolume" && !output->hasVolume)
        return "the output " + quoted(name) + " has no volume of its own";
    if (operation == "setOutputMute" && !output->hasMute)
        return "the output " + quoted(name) + " has no mute of its own";
    return "";
}

std::string checkSource(const std::string& source)
{
    if (findSource(source) != nullptr)
        return "";
    return withHint("there is no source " + quoted(source), source, names::sources(), "sources");
}

std::string checkSink(const std::string& source, const std::string& sink)
{
    if (!sink.empty() && findSource(source, sink) != nullptr)
        return "";
    const bool knownSource = findSource(source) != nullptr;
    const Names known = names::sinks(knownSource ? source : "");
    if (isOneOf(sink, known))
        return "";
    const std::string hint = didYouMean(sink, known);
    return (knownSource ? "the source " + quoted(source) + " is reached through " + anyOf(known) +
                              ", not through " + quoted(sink)
                        : "there is no sink " + quoted(sink)) +
           (hint.empty() ? "" : "; " + hint);
}

// --- Payloads

Names namesOf(const kepList<kepKey>& keys)
{
    Names all;
    for (const kepKey& key : keys)
        all.emplace_back(key.name);
    return all;
}

/// A text that no key of this name tells apart.
std::string checkText(const kepKey& key, const std::string& text)
{
    const Names known = namesOf(key.values);
    if (known.empty() || isOneOf(text, known))
        return "";
    const std::string hint = didYouMean(text, known);
    if (hint.empty() && !key.onlyThose)
        return "";
    return quoted(key.name) + " knows no " + quoted(text) + "; " +
           (hint.empty() ? "it takes " + anyOf(known) : hint);
}

void checkText(const kepKey& key, const JValue& value, Names& sentences)
{
    const std::vector<JValue> texts =
        value.isArray() ? value.elements() : std::vector<JValue>{value};
    for (const JValue& text : texts)
        if (text.isString())
            sentences.push_back(checkText(key, text.asString()));
}

struct KeySet {
    std::string owner; // as the sentence names it
    kepList<kepKey> keys;
    Names others; // keys that are known, too
};

/// Keys and texts of a payload.
void checkKeys(const JValue& payload, const KeySet& set, Names& sentences)
{
    if (!payload.isObject()) {
        if (!set.keys.empty())
            sentences.push_back(set.owner + " takes an object");
        return;
    }
    Names known = namesOf(set.keys);
    known.insert(known.end(), set.others.begin(), set.others.end());
    for (const auto& [name, value] : payload.members()) {
        if (!isOneOf(name, known)) {
            // Others are nobody's business: a payload may hold what only its sender needs.
            const std::string hint = didYouMean(name, known);
            if (!hint.empty())
                sentences.push_back(set.owner + " has no key " + quoted(name) + "; " + hint);
            continue;
        }
        for (const kepKey& key : set.keys)
            if (name == key.name)
                checkText(key, value, sentences);
    }
    if (!sentences.empty()) // a key that is missing is most likely the misspelt one
        return;
    for (const kepKey& key : set.keys)
        if (key.needed && !payload.hasKey(key.name))
            sentences.push_back(set.owner + " needs the key " + quoted(key.name));
}

Names qualityKeys()
{
    Names all;
    for (const kepQualityKeys& reader : kepCatalogue::soundQualityKeys())
        for (const kepKey& key : reader.keys)
            if (!isOneOf(key.name, all))
                all.emplace_back(key.name);
    return all;
}

void checkSettings(const std::string& name, const JValue& payload, Names& sentences)
{
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories()) {
        if (name != category.name)
            continue;
        if (!category.supported)
            sentences.push_back("the category " + quoted(name) + " is known, and always refused");
        else
            checkKeys(payload,
                      {"the category " + quoted(name), category.keys,
                       category.takesQualityKeys ? qualityKeys() : Names{}},
                      sentences);
        return;
    }
    sentences.push_back(withHint("there is no category " + quoted(name), name,
                                 names::settingsCategories(), "categories"));
}

void checkQuery(const std::string& name, const JValue& request, Names& sentences)
{
    if (name.empty()) // asks for all that is stored
        return;
    if (!isOneOf(name, names::queries())) {
        sentences.push_back(withHint("there is nothing to ask for named " + quoted(name), name,
                                     names::queries(), "queries"));
        return;
    }
    for (const kepQuery& query : kepCatalogue::queries())
        if (name == query.name)
            checkKeys(request, {"the query " + quoted(name), query.keys, {}}, sentences);
}

void checkQuality(const JValue& attribute, Names& sentences)
{
    checkKeys(attribute, {"a quality attribute", kepCatalogue::qualityAttributeKeys(), {}},
              sentences);
    Names types;
    for (const kepRequestType& type : kepCatalogue::requestTypes())
        if (*type.name != '\0')
            types.emplace_back(type.name);
    const std::string type = attribute["requestType"].asString();
    if (!type.empty() && !isOneOf(type, types)) {
        const std::string hint = didYouMean(type, types);
        sentences.push_back("\"requestType\" knows no " + quoted(type) + "; " +
                            (hint.empty() ? "it takes " + anyOf(types) : hint));
    }
}

} // namespace

Names misnamed(const Operation& operation, std::span<const JValue> arguments)
{
    Names sentences;
    const std::string name = operation.name;
    std::string before; // the text argument before this one: the source of a sink, a category
    for (std::size_t i = 0; i < operation.argumentCount; ++i) {
        const JValue& argument = arguments[i];
        switch (operation.arguments[i].kind) {
        case ArgumentKind::SoundOutput:
            sentences.push_back(checkOutput(name, argument.asString()));
            break;
        case ArgumentKind::Source:
            sentences.push_back(checkSource(argument.asString()));
            break;
        case ArgumentKind::Sink:
            sentences.push_back(checkSink(before, argument.asString()));
            break;
        case ArgumentKind::Payload:
            if (name == "connectInput")
                checkKeys(argument,
                          {"the pipeline attribute", kepCatalogue::pipelineAttributeKeys(), {}},
                          sentences);
            else if (name == "setSettings")
                checkSettings(before, argument, sentences);
            else if (name == "getSettings")
                checkQuery(before, argument, sentences);
            else
                checkQuality(argument, sentences);
            break;
        default:
            break;
        }
        before = argument.asString();
    }
    sentences.erase(std::remove(sentences.begin(), sentences.end(), ""), sentences.end());
    return sentences;
}
