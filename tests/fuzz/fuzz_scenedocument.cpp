// Reads mutated texts as scene documents. What is read is written, and the writing must read back to a document that is written
// in the same bytes.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/scenefile/scenefile.h"

namespace
{

using DocumentOwner = q7z::HeadlessOwner<q7z::HeadlessDocument>;

constexpr std::string_view kFolder = "/folder";

[[noreturn]] void Fail(const char* what, std::string_view first, std::string_view second)
{
  std::fprintf(stderr, "%s\n%.*s\n---\n%.*s\n", what, static_cast<int>(first.size()), first.data(),
               static_cast<int>(second.size()), second.data());
  std::abort();
}

std::string Write(const q7z::HeadlessDocument& document)
{
  q7z::StringSink sink;
  const q7z::Result<void> written = q7z::WriteSceneDocument(document, kFolder, sink);
  if (written.HasError())
    Fail("not written", written.GetError().GetMessage().GetView(), sink.GetText());
  return sink.GetText();
}

/// Objects are written with their matrices, which a text that is read may leave out; at the deepest they are two levels too many.
bool IsTooDeep(const q7z::Error& error)
{
  return error.GetMessage().GetView().find("nested deeper than") != std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  const q7z::Result<DocumentOwner> document = q7z::ReadSceneDocument({reinterpret_cast<const char*>(data), size}, kFolder);
  if (document.HasError())
    return 0;
  const std::string text = Write(*document.GetValue());
  const q7z::Result<DocumentOwner> again = q7z::ReadSceneDocument(text, kFolder);
  if (again.HasError() && IsTooDeep(again.GetError()))
    return 0;
  if (again.HasError())
    Fail("not read again", again.GetError().GetMessage().GetView(), text);
  const std::string textAgain = Write(*again.GetValue());
  if (textAgain != text)
    Fail("not the same text", text, textAgain);
  return 0;
}
