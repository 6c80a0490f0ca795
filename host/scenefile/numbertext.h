#pragma once

// The texts of floating-point numbers in scene documents: the shortest that read back as the same number, always with a point or
// an exponent.
//
// Data that is kept in 32 bits is written in the shortest form of its 32 bits ("0.1", not "0.10000000149011612"), and the reader
// keeps an array of corner data in 32 bits again when each of its numbers has the text that a 32-bit number is written with. So
// that an array of 64-bit numbers is never taken for one (all of its numbers may happen to have such texts, as 0.5 does), its
// first number then gets a zero at the end, "0.50": the same number, but no text that a 32-bit number is written with.

#include <string_view>

#include "framework/types.h"

namespace q7z
{

/// Room that the text of any number needs.
inline constexpr size_t kNumberTextBytes = 48;

/// What the shortest text of the largest 32-bit number reads as: a little more than that number, to which it is narrowed again.
inline constexpr Float kLargestSingle = 3.4028235e+38;

/// The text of a finite number. @return its end.
char* WriteFloatText(char* target, Float number) noexcept;

/// The text of a finite 32-bit number. Read as a 64-bit number and narrowed, it gives the same number. @return its end.
char* WriteSingleText(char* target, Float32 number) noexcept;

/// The text of a finite number with one zero more than it needs. @return its end.
char* WriteMarkedFloatText(char* target, Float number) noexcept;

/// Whether text is what WriteSingleText gives for the 32-bit number nearest to number, which is the number that text reads as.
Bool IsSingleText(std::string_view text, Float number) noexcept;

/// Whether the text of a finite number, as WriteFloatText gives it, would pass for that of a 32-bit one.
Bool HasSingleText(Float number) noexcept;

}  // namespace q7z
