#pragma once

// RecordedWarnings: what was told of files that are left out, each once.

#include <mutex>
#include <set>
#include <string>

#include "host/services/headlessfiles.h"

namespace q7z::test
{

class RecordedWarnings final : public FileWarnings
{
public:
  std::set<std::string> texts;
  void AddWarning(const std::string& text) override
  {
    const std::lock_guard lock(_mutex);
    texts.insert(text);
  }

private:
  std::mutex _mutex;
};

}  // namespace q7z::test
