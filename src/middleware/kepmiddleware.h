// SPDX-License-Identifier: Apache-2.0
// What all adapters have in common: how a status becomes a bool, and how a parameter map is handed
// over.
#pragma once

#include "keplog.h"
#include "keptvparser.h"
#include "mwlparams.h"

/// Whether a middleware call answered success (0); any other status is logged as an error with that
/// id. A macro as the other log macros are: the text is made only when it is needed, and checked.
#define KEP_SUCCEEDED(status, id, format, ...)                                                     \
    ((status) == 0 || (kepLogAdmits(kLogError) ? kepLogEmit(KEP_HERE, kLogError, id,               \
                                                            format __VA_OPT__(, ) __VA_ARGS__)     \
                                               : void(),                                           \
                       false))

/// Hands one of the store's maps to a registering operation; its status.
template <typename Library>
int registerParams(Library* library, int (Library::*operation)(MwlParams*),
                   kepTvParser::Map kepTvParser::*map)
{
    kepTvParser* parser = kepTvParser::getInstance();
    return parser->withMap(
        parser->*map, [&](MwlParams& parameters) { return (library->*operation)(&parameters); });
}
