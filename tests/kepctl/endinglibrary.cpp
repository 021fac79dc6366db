// SPDX-License-Identifier: Apache-2.0
// A library that ends the program when a card is opened; loaded in front of libasound.
#include <unistd.h>

extern "C" [[gnu::visibility("default")]] int snd_hctl_open(void**, const char*, int)
{
    _exit(7);
}
