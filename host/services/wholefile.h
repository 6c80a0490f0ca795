#pragma once

// WholeFile: an output file that appears whole or not at all. It is written as a stream beside its target under a temporary name;
// Commit flushes, syncs and renames it. Until then, and after any failure, the target is as it was. A target that is a link stays
// one, and what it leads to is replaced; a device or a pipe, which cannot be replaced, is written to as it is.

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

  /// @return an empty text, or why the target cannot be written.
  std::string Open(const std::string& target);
  /// The stream to write to; null until Open has succeeded.
  std::FILE* GetStream() const noexcept { return _stream; }
  /// Whether the target is written to as it is, since it cannot be replaced.
  bool IsDevice() const noexcept { return _temporary.empty(); }
  /// The file that Commit puts in the target's place, for who writes it by name. The stream is closed first, since not every system
  /// lets a file go that is open. Not for a device.
  const std::string& HandOver() noexcept;
  /// Puts the file in the target's place. @return an empty text, or why that failed.
  std::string Commit();
  /// The reason alone of the last failure, without what could not be written.
  const std::string& GetReason() const noexcept { return _reason; }

private:
  std::string FinishDevice(std::FILE* stream);
  void Discard() noexcept;
  bool CloseStream() noexcept;
  std::string Describe(const std::string& reason);

  std::FILE* _stream = nullptr;
  std::string _named;   // the target as the caller names it
  std::string _target;  // without links
  std::string _reason;
  std::string _temporary;  // empty for a target that is written to as it is
};

}  // namespace q7z
