/// @file
/// The unsigned integer types that the library and its platform are written in.
#pragma once

#include <cstdint>

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
