#pragma once

// WholeFile: an output file that appears whole or not at all. It is written as a stream beside its target under a temporary name;
// Commit flushes, syncs and renames it. Until then, and after any failure, the target is as it was.

#include <cstdio>
#include <string>

namespace q7z
{

class WholeFile
{
public:
  WholeFile() noexcept = default;
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  /// Without a Commit nothing remains.
  ~WholeFile();

  /// @return an empty text, or why no file can be made beside the target.
  std::string Open(const std::string& target);
  /// The stream to write to; null until Open has succeeded.
  std::FILE* GetStream() const noexcept { return _stream; }
  /// Puts the file in the target's place. @return an empty text, or why that failed.
  std::string Commit();

private:
  void Discard() noexcept;

  std::FILE* _stream = nullptr;
  std::string _temporary;
  std::string _target;
};

}  // namespace q7z
