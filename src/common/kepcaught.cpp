// SPDX-License-Identifier: Apache-2.0
// The end of everything thrown. Memory may be what is missing: nothing here asks for any.
#include "kepcaught.h"

#include <exception>
#include <typeinfo>

#include <cxxabi.h>

void kepPassOnThreadEnd()
{
    static_cast<void>(kepCaughtText());
}

// What ends a thread comes without an object: the undefined-behaviour sanitizer takes the reference
// to it, which nobody reads, for a mistake.
__attribute__((no_sanitize("undefined"))) const char* kepCaughtText()
{
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw; // the thread is being ended; whoever stops that ends the process
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        const std::type_info* type = abi::__cxa_current_exception_type();
        return type != nullptr ? type->name() : "foreign exception";
    }
}

void kepLogCaught(kepLogOrigin origin, const char* operation)
{
    const char* text = kepCaughtText();
    KEP_ERROR_AS(origin, "ERROR_LOG", "Exception in %s: %s", operation, text);
}
