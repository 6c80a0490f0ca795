#pragma once

// The number types of the system. Every layer uses these names; sizes are part of the contract with the host.

#include <cstddef>
#include <cstdint>

namespace q7z
{

using Bool = bool;
using Char = char;  ///< one byte of UTF-8
using Byte = std::uint8_t;
using Int16 = std::int16_t;
using UInt16 = std::uint16_t;
using Int32 = std::int32_t;
using UInt32 = std::uint32_t;
using Int = std::int64_t;
using UInt = std::uint64_t;
using Float32 = float;
using Float = double;

}  // namespace q7z
