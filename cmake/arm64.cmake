# SPDX-License-Identifier: Apache-2.0
# For 64-bit ARM: Debian's compiler, and the libraries of that architecture beside the machine's own
# (./kep setup arm64 installs both).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(PKG_CONFIG_ARGN --personality=aarch64-linux-gnu)
