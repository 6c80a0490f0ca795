#pragma once

// One host around the built library for many loads. Each load has a document of its own, which is freed before the result is handed
// out, so that what is left over shows.

#include <map>
#include <memory>
#include <string>

#include "host/headlesshost.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{

/// What came of a load, counted while its document was there.
struct LoadResult
{
  std::string status;  ///< "not_recognised" when no loader took the file
  int assetWarnings = 0;
  int dataWarnings = 0;
  int nodeWarnings = 0;
  Int objects = 0;
  Int points = 0;
  Int polygons = 0;
  Int leftover = 0;  ///< nodes and tracks that outlived the document
  Int mistakes = 0;  ///< nodes inserted twice or freed while inserted
  std::string text;  ///< error and messages, for a failing test
};

/// A host around the built library. @param bakesSplines  whether imported splines get a key at each frame.
std::unique_ptr<HeadlessHost> MakeHost(bool bakesSplines = false);

class Loader
{
public:
  /// parameters  of the loader by id, over its defaults.
  LoadResult Load(const std::string& path, const std::map<int, bool>& parameters = {});
  /// The same for bytes, under a file name.
  LoadResult LoadBytes(const std::string& name, const std::string& bytes);

private:
  std::unique_ptr<HeadlessHost> _host = MakeHost();
  TestFolder _folder;
};

/// The words that a load's status is one of.
bool IsStatusWord(const std::string& status);

}  // namespace q7z::test
