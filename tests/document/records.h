#pragma once

// Records read from a JSON text, as a load reads them, for tests that need no file.

#include <gtest/gtest.h>

#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfimportoptions.h"
#include "tests/document/testjson.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

/// The records of a document whose buffer 0, if it has one, holds the bytes.
inline GltfData ReadRecords(const std::string& json, const Bytes& bytes = {}, const ImportOptions& options = ImportOptions())
{
  GltfData data;
  EXPECT_EQ(ErrorText(data.Init()), "");
  EXPECT_EQ(ErrorText(FillInLoadedData(&data, ParseObject(json), options)), "");
  BaseArray<Byte> copy;
  EXPECT_EQ(ErrorText(copy.AppendCopies(bytes.data(), static_cast<Int>(bytes.size()))), "");
  if (GltfBuffer* const buffer = data.buffers.Find(0))
    buffer->TakeBytes(std::move(copy));
  return data;
}

/// A document with one accessor, 0, over all of the bytes. @param accessor  its members but bufferView.
inline GltfData ReadAccessor(const std::string& accessor, const Bytes& bytes, const std::string& view = "")
{
  const std::string byteLength = R"("byteLength":)" + std::to_string(bytes.size());
  return ReadRecords(R"({"buffers":[{)" + byteLength + R"(}],"bufferViews":[{"buffer":0,)" + byteLength + view +
                       R"(}],"accessors":[{"bufferView":0,)" + accessor + "}]}",
                     bytes);
}

}  // namespace q7z::test
