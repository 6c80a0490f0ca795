#pragma once

// How the JPEG library reports errors here: by a jump out of it, to where the caller has set `jump` with setjmp. No object with a
// destructor may live between the two. For the sources that use the library.

#include <csetjmp>

#include "framework/error.h"

struct jpeg_common_struct;
struct jpeg_error_mgr;

namespace q7z
{

/// Lives where the library's object does.
struct JpegErrors
{
  std::jmp_buf jump;
  char text[240];  // as long as the library's longest message
  Bool isOutOfMemory;

  /// Makes the object report here, by way of manager; takes its client_data.
  void Connect(jpeg_common_struct* object, jpeg_error_mgr* manager) noexcept;
  /// What the jump was for.
  Error MakeError() const noexcept;
  /// Ends the library's work with a text of ours. Goes to `jump`.
  [[noreturn]] static void Fail(jpeg_common_struct* object, const char* reason) noexcept;
};

}  // namespace q7z
