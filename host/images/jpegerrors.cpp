#include "host/images/jpegerrors.h"

#include <cstdio>

#include <jpeglib.h>

#include <jerror.h>

#include "host/images/decode.h"

namespace q7z
{

namespace
{

JpegErrors& GetErrors(j_common_ptr object) noexcept
{
  return *static_cast<JpegErrors*>(object->client_data);
}

[[noreturn]] void OnError(j_common_ptr object)
{
  JpegErrors& errors = GetErrors(object);
  errors.isOutOfMemory = object->err->msg_code == JERR_OUT_OF_MEMORY;
  char reason[JMSG_LENGTH_MAX];
  object->err->format_message(object, reason);
  JpegErrors::Fail(object, reason);
}

/// Warnings that leave the pixels as they were meant.
Bool IsHarmless(int code) noexcept
{
  switch (code)
  {
    case JWRN_ADOBE_XFORM:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_JFIF_MAJOR:
    case JWRN_TOO_MUCH_DATA: return true;
    default: return false;
  }
}

/// level -1 is a warning, others are notes. The library would fill broken places with grey and go on.
void OnMessage(j_common_ptr object, int level)
{
  if (level < 0 && !IsHarmless(object->err->msg_code))
    OnError(object);
}

void OnOutput(j_common_ptr)
{}

}  // namespace

void JpegErrors::Connect(j_common_ptr object, jpeg_error_mgr* manager) noexcept
{
  object->err = jpeg_std_error(manager);
  object->client_data = this;
  manager->error_exit = &OnError;
  manager->emit_message = &OnMessage;
  manager->output_message = &OnOutput;
  text[0] = '\0';
  isOutOfMemory = false;
}

Error JpegErrors::MakeError() const noexcept
{
  return isOutOfMemory ? Error::OutOfMemory() : MakeImageError(text);
}

void JpegErrors::Fail(j_common_ptr object, const char* reason) noexcept
{
  JpegErrors& errors = GetErrors(object);
  std::snprintf(errors.text, sizeof(errors.text), "the JPEG image is broken: %s", reason);
  std::longjmp(errors.jump, 1);
}

}  // namespace q7z
