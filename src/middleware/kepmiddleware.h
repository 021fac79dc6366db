// SPDX-License-Identifier: Apache-2.0
// What all adapters have in common: how a parameter map is handed over.
#pragma once

#include <memory>

#include "keplog.h"
#include "keptvparser.h"
#include "mwlparams.h"

/// Hands one of the store's maps to a registering operation, with no guard held; its status.
template <auto Operation, typename Library>
int registerParams(Library* library, kepTvParser::Map kepTvParser::*map)
{
    // One for each operation, and never destroyed: the middleware may still be reading it.
    static auto& kept = *new std::shared_ptr<kepTvParser::Map>;
    kepTvParser* parser = kepTvParser::getInstance();
    const std::shared_ptr<kepTvParser::Map> parameters = parser->forCall(parser->*map, kept);
    return (library->*Operation)(parameters.get());
}
