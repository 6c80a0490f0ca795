// q7z_generate KIND SIZE... OUT: writes one input of the benchmarks.

#include "bench/generate/inputs.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace q7z;
using namespace q7z::generate;

constexpr const char* kUsage =
  "usage: q7z_generate grid SIDE OUT            one mesh of SIDE x SIDE vertices\n"
  "       q7z_generate nodes COUNT MESHES OUT   COUNT nodes that share MESHES small meshes\n"
  "       q7z_generate animation NODES KEYS OUT  NODES nodes moved by KEYS keys for each of three channels\n"
  "       q7z_generate small BYTES OUT          a file of about that many bytes\n"
  "       q7z_generate skin SIDE JOINTS OUT     SIDE x SIDE vertices that follow JOINTS joints\n"
  "       q7z_generate morphs SIDE TARGETS OUT  SIDE x SIDE vertices with TARGETS morph targets\n"
  "       q7z_generate textures COUNT SIDE OUT  COUNT materials with textures of SIDE x SIDE pixels\n"
  "options: --glb, --gltf    the form; without them OUT's suffix tells, and .gltf where it does not\n"
  "         --start NUMBER   another input of the same sizes\n"
  "OUT - is the standard output.\n";

struct Arguments
{
  std::vector<std::string> words;
  std::optional<FileForm> form;
  UInt start = kDefaultStart;
};

template <typename T>
std::optional<T> Number(std::string_view text)
{
  T value = 0;
  const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size())
    return std::nullopt;
  return value;
}

std::optional<Arguments> ReadArguments(int argc, char** argv)
{
  Arguments arguments;
  for (int i = 1; i < argc; ++i)
  {
    const std::string_view word = argv[i];
    if (word == "--glb" || word == "--gltf")
      arguments.form = word == "--glb" ? FileForm::kGlb : FileForm::kGltf;
    else if (word == "--start" && i + 1 < argc)
    {
      const std::optional<UInt> start = Number<UInt>(argv[++i]);
      if (!start)
        return std::nullopt;
      arguments.start = *start;
    }
    else if (word.starts_with("-") && word != "-")
      return std::nullopt;
    else
      arguments.words.emplace_back(word);
  }
  return arguments;
}

// The file that the words ask for; nothing if they are not understood.
std::optional<GltfFile> MakeFile(const Arguments& arguments, FileForm form)
{
  const std::vector<std::string>& words = arguments.words;
  std::vector<Int> sizes;
  for (std::size_t i = 1; i + 1 < words.size(); ++i)
    sizes.push_back(Number<Int>(words[i]).value_or(0));
  if (words[0] == "grid" && sizes.size() == 1 && sizes[0] >= 2)
    return MakeGrid(sizes[0], arguments.start);
  if (words[0] == "nodes" && sizes.size() == 2 && sizes[0] >= 1 && sizes[1] >= 1)
    return MakeNodes(sizes[0], sizes[1], arguments.start);
  if (words[0] == "animation" && sizes.size() == 2 && sizes[0] >= 1 && sizes[1] >= 1)
    return MakeAnimation(sizes[0], sizes[1], arguments.start);
  if (words[0] == "small" && sizes.size() == 1 && sizes[0] >= 1)
    return MakeSmall(sizes[0], form, arguments.start);
  if (words[0] == "skin" && sizes.size() == 2 && sizes[0] >= 2 && sizes[1] >= 4)
    return MakeSkin(sizes[0], sizes[1], arguments.start);
  if (words[0] == "morphs" && sizes.size() == 2 && sizes[0] >= 2 && sizes[1] >= 1)
    return MakeMorphs(sizes[0], sizes[1], arguments.start);
  if (words[0] == "textures" && sizes.size() == 2 && sizes[0] >= 1 && sizes[1] >= 1)
    return MakeTextures(sizes[0], sizes[1], arguments.start);
  return std::nullopt;
}

int Run(int argc, char** argv)
{
  const std::optional<Arguments> arguments = ReadArguments(argc, argv);
  if (arguments && arguments->words.size() >= 3)
  {
    const std::string& path = arguments->words.back();
    const FileForm form = arguments->form.value_or(FormOfPath(path));
    if (const std::optional<GltfFile> file = MakeFile(*arguments, form))
    {
      FileSink target(path);
      file->Write(target, form);
      target.Finish();
      return 0;
    }
  }
  std::fputs(kUsage, stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv)
{
  try
  {
    return Run(argc, argv);
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "q7z_generate: %s\n", error.what());
    return 1;
  }
}
