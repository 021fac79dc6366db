// SPDX-License-Identifier: Apache-2.0
// The end of everything thrown: what each entry point does in its `catch (...)`.
#pragma once

#include <utility>

#include "keplog.h"

// Only for the time that a `catch (...)` handles something. A thread that is being ended, by
// pthread_exit or by cancellation, unwinds through such a handler as well: it must go on, so all of
// these pass that on instead of returning.

/// Returns unless the thread is being ended. For a handler that logs nothing.
void kepPassOnThreadEnd();

/// What is being handled: the text of a standard exception, else the name of its type. Needs no
/// memory; holds as long as the handler.
const char* kepCaughtText();

/// Logs one error line, "ERROR_LOG", with the operation that ends here and what was caught.
void kepLogCaught(kepLogOrigin origin, const char* operation);

/// The same for an operation that answers `failed` then, named like its function.
template <typename Result>
Result kepCaught(kepLogOrigin origin, Result failed)
{
    kepLogCaught(origin, origin.function);
    return failed;
}

/// Runs `body` as an entry point; `failed` when it throws, with the line above. For
/// callbacks and steps that only call: what logs by itself is a function of its own, with a `catch
/// (...)`.
template <typename Result, typename Body>
Result kepGuarded(kepLogOrigin origin, const char* operation, Result failed, Body&& body)
try {
    return std::forward<Body>(body)();
} catch (...) {
    kepLogCaught(origin, operation);
    return failed;
}
