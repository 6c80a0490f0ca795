// q7z_samples FOLDER: writes the sample files into the folder.

#include "samples/generate/harbour.h"

#include <cstdio>
#include <exception>
#include <string>

namespace
{

// So that a change of the text can be read line by line.
constexpr q7z::Int kLineDepth = 2;

void WriteSample(const q7z::generate::GltfFile& file, const std::string& path)
{
  q7z::generate::FileSink target(path);
  const q7z::generate::FileForm form = q7z::generate::FormOfPath(path);
  file.Write(target, form, form == q7z::generate::FileForm::kGltf ? kLineDepth : 0);
  target.Finish();
}

}  // namespace

int main(int argc, char** argv)
{
  if (argc != 2 || argv[1][0] == '-')
  {
    std::fputs("usage: q7z_samples FOLDER\nwrites scene.glb and scene.gltf into the folder\n", stderr);
    return 2;
  }
  try
  {
    const std::string folder = argv[1];
    const q7z::generate::GltfFile harbour = q7z::generate::MakeHarbour();
    WriteSample(harbour, folder + "/scene.glb");
    WriteSample(harbour, folder + "/scene.gltf");
    return 0;
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "q7z_samples: %s\n", error.what());
    return 1;
  }
}
