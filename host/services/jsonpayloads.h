#pragma once

// JsonPayloads: takes the long payloads of data URIs out of a JSON text before it is parsed, and finds them again behind the
// parsed strings. A payload may be most of a file, and the parser copies every string it meets. For one parse, on its stack.

#include <string>
#include <string_view>
#include <vector>

#include "framework/types.h"

namespace q7z
{

class JsonPayloads
{
public:
  /// Looks for payloads in text, which must outlive this object and be well-formed where it is UTF-8 at all. Throws bad_alloc.
  explicit JsonPayloads(std::string_view text);

  /// The length of them all. What is a small part of the text may as well be parsed with it.
  size_t GetByteCount() const noexcept;
  /// The text with a short mark in the place of each payload, with room for spare bytes behind it. Throws bad_alloc.
  std::string MakeShortenedText(size_t spareByteCount) const;

  /// @return the string of the original text that a parsed string stands for; empty when it stands for itself.
  std::string_view FindOriginal(std::string_view parsed) noexcept;
  /// Whether each payload was found again exactly once. If not, the text has strings that look like marks, and all must be parsed
  /// anew as it is.
  Bool WereFoundOnce() const noexcept { return _foundCount == _payloads.size() && !_foundTwice; }

private:
  struct Payload
  {
    std::string_view string;  // all of it, in the original text
    size_t prefixLength = 0;  // of what stands in front of the payload
    Bool found = false;
  };

  Payload Find(std::string_view text, size_t from) const noexcept;

  std::string_view _text;
  std::vector<Payload> _payloads;  // in the order of the text
  size_t _foundCount = 0;
  Bool _foundTwice = false;
};

}  // namespace q7z
