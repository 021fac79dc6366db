// SPDX-License-Identifier: Apache-2.0
// libasound's own messages.
#pragma once

/// Sends libasound's messages to standard error, indented, each once; or to nobody.
void handleAlsaMessages(bool shown);
