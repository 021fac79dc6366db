// SPDX-License-Identifier: Apache-2.0
// A program whose whole cost is that its libraries are loaded.
int main()
{
    return 0;
}
