// SPDX-License-Identifier: Apache-2.0
// Carries the precompiled headers of all tests.
