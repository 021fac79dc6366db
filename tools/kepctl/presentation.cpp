// SPDX-License-Identifier: Apache-2.0
// How a run is shown: the writer of the format behind the filters that were asked for. An event
// meets them in the opposite order of their lines here: what is left out costs nothing more, and
// the time stands last.
#include "presentation.h"

#include <utility>

#include "eventfilters.h"
#include "terminal.h"

std::string faultOf(const Presentation& presentation)
{
    EventSelection selection;
    return presentation.only.empty() ? "" : parseSelection(presentation.only, selection);
}

std::unique_ptr<EventWriter> makeWriter(const Presentation& presentation,
                                        std::function<void()> announce)
{
    const bool text = presentation.format == "text";
    std::unique_ptr<EventWriter> writer =
        text ? makeTextWriter(
                   {.colour = wantsColour(presentation.colour), .time = presentation.time})
             : makeJsonLinesWriter();
    if (announce)
        writer = announcing(std::move(announce), std::move(writer));
    if (presentation.time)
        writer = timing(!presentation.noClocks, std::move(writer));
    if (presentation.noClocks)
        writer = withoutClocks(std::move(writer));
    if (presentation.explain && text)
        writer = explaining(std::move(writer));
    EventSelection selection;
    if (!presentation.only.empty() && parseSelection(presentation.only, selection).empty())
        writer = selecting(selection, std::move(writer));
    return writer;
}
