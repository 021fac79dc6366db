// SPDX-License-Identifier: Apache-2.0
// What there is by name.
#include "names.h"

#include <algorithm>
#include <iterator>

#include "cardelements.h"
#include "devicenames.h"
#include "kepcatalogue.h"

namespace names
{
namespace
{

/// Adds a name unless it is there.
void add(Names& names, const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

} // namespace

Names soundOutputs()
{
    Names all;
    for (const kepSoundOutput& output : kepCatalogue::soundOutputs())
        for (const char* name : output.names)
            add(all, name);
    return all;
}

Names sources()
{
    Names all;
    for (const kepInputSource& input : kepCatalogue::inputSources())
        add(all, input.source);
    return all;
}

Names sinks(const std::string& source)
{
    Names all;
    for (const kepInputSource& input : kepCatalogue::inputSources())
        if (source.empty() || source == input.source)
            for (const char* sink : input.sinks)
                add(all, sink);
    return all;
}

Names settingsCategories()
{
    Names all;
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories())
        add(all, category.name);
    return all;
}

Names queries()
{
    Names all;
    for (const kepQuery& query : kepCatalogue::queries())
        add(all, query.name);
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories())
        if (category.stored)
            add(all, category.name);
    return all;
}

Names elements(const std::string& card)
{
    Names all;
    for (const CardElement& element : cardElements())
        if (card.empty() || card == element.card)
            add(all, element.name);
    return all;
}

Names middlewareOperations()
{
    Names all;
    for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations)
        all.emplace_back(operation.name);
    return all;
}

Names inputLines()
{
    return {std::begin(virtualtv::kInputLines), std::end(virtualtv::kInputLines)};
}

Names subMicroOperations()
{
    Names all;
    for (const virtualtv::DeviceOperation& operation : virtualtv::kSubMicroOperations)
        all.emplace_back(operation.name);
    return all;
}

} // namespace names
