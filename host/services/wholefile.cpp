#include "host/services/wholefile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace q7z
{

namespace
{

std::string GetFolder(const std::string& path)
{
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// A new file gets the usual rights, one that replaces another those of the other.
mode_t GetMode(const std::string& target)
{
  struct stat old = {};
  if (stat(target.c_str(), &old) == 0)
    return old.st_mode & 07777;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

/// What a link leads to, so that the link stays.
std::string FollowLinks(const std::string& path)
{
  char* const resolved = realpath(path.c_str(), nullptr);
  const std::string target = resolved ? resolved : path;
  std::free(resolved);
  return target;
}

bool IsSpecial(const std::string& path)
{
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

WholeFile::~WholeFile()
{
  Discard();
}

std::string WholeFile::Open(const std::string& target)
{
  Discard();
  _target = FollowLinks(target);
  if (IsSpecial(_target))
    return "cannot write \"" + target + "\": it is no plain file";
  _temporary = GetFolder(_target) + ".q7z-XXXXXX";
  const int fd = mkstemp(_temporary.data());
  _stream = fd < 0 ? nullptr : fdopen(fd, "wb");
  if (_stream)
    return "";
  const std::string reason = std::strerror(errno);
  if (fd >= 0)
  {
    close(fd);
    unlink(_temporary.c_str());
  }
  return "cannot write \"" + target + "\": " + reason;
}

std::string WholeFile::Commit()
{
  if (!_stream)
    return "nothing was written";
  const int fd = fileno(_stream);
  bool kept = std::fflush(_stream) == 0 && !std::ferror(_stream) && fchmod(fd, GetMode(_target)) == 0 && fsync(fd) == 0;
  std::string reason = kept ? "" : std::strerror(errno);
  if (std::fclose(_stream) != 0 && kept)
  {
    kept = false;
    reason = std::strerror(errno);
  }
  _stream = nullptr;
  if (kept && std::rename(_temporary.c_str(), _target.c_str()) == 0)
    return "";
  if (kept)
    reason = std::strerror(errno);
  unlink(_temporary.c_str());
  return "cannot write \"" + _target + "\": " + reason;
}

void WholeFile::Discard() noexcept
{
  if (!_stream)
    return;
  std::fclose(_stream);
  _stream = nullptr;
  unlink(_temporary.c_str());
}

}  // namespace q7z
