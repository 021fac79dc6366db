// SPDX-License-Identifier: Apache-2.0
// For tests of files that cannot be read: root can read everything.
#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

/// A process that may read no file of somebody else's.
class AsNobody
{
public:
    AsNobody() : mWasRoot(geteuid() == 0)
    {
        if (mWasRoot) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~AsNobody()
    {
        if (mWasRoot) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    const bool mWasRoot;
};
