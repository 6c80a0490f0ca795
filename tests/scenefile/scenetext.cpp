#include "tests/scenefile/scenetext.h"

#include <gtest/gtest.h>

namespace q7z::test
{

DocumentOwner Read(std::string_view text, std::string_view folder)
{
  Result<DocumentOwner> document = ReadSceneDocument(text, folder);
  if (!document.HasError())
    return std::move(document).GetValue();
  ADD_FAILURE() << document.GetError().GetMessage().GetView();
  return nullptr;
}

std::string Write(const HeadlessDocument& document, std::string_view folder)
{
  StringSink sink;
  EXPECT_FALSE(WriteSceneDocument(document, folder, sink).HasError());
  return sink.GetText();
}

std::string Rewrite(std::string_view text)
{
  const DocumentOwner document = Read(text);
  return document ? Write(*document) : std::string();
}

std::string GetRefusal(std::string_view text)
{
  const Result<DocumentOwner> document = ReadSceneDocument(text, "");
  if (!document.HasError())
    return {};
  EXPECT_EQ(document.GetError().GetClass(), ErrorClass::kUnexpected);
  return std::string(document.GetError().GetMessage().GetView());
}

std::string MakeText(std::string_view members)
{
  const std::string_view comma = members.empty() ? "" : ", ";
  return R"({"format": "q7z scene", "version": 1)" + std::string(comma) + std::string(members) + "}";
}

std::string MakeTagText(std::string_view tags)
{
  return MakeText(R"("objects": [{"id": 1, "type": 5100, "points": [0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0],
                     "polygons": [0, 1, 2, 2, 0, 2, 3, 3], "tags": [)" +
                  std::string(tags) + "]}]");
}

Int CountNodes()
{
  return GetSceneDiagnostics().liveNodes + GetSceneDiagnostics().liveTracks;
}

const std::string_view kEverything = R"({
  "format": "q7z scene",
  "version": 1,
  "name": "Pier \"é\"",
  "nodeSpace": "other.space",
  "parameters": {"1001": 25, "1003": {"time": [7, 2]}, "2000": "generator", "1002": null},
  "settings": {
    "7": {
      "container": {"1": true, "2": {"link": 8}, "3": {"link": null}, "4": {"container": {}}, "903.1000": 0.5, "903.1000.2": -4}
    },
    "2117": {"unit": [2.5, 2]}
  },
  "render": {"5008": 640},
  "time": [1.5, 2],
  "layers": [{"id": 1, "name": "Water"}, {"id": 2}],
  "materials": [
    {
      "id": 3, "type": 5703, "name": "Wood",
      "node": {
        "space": "net.space", "materialType": "net.tarno.material.portbundle.gltf",
        "parameters": {
          "baseColorFactor": {"value": {"vector4": [1.0, 0.5, 0.25, 1.0]}, "constant": true},
          "emissiveFactor": {"value": {"vector": [0.1, 0.2, 0.30000000000000004]}, "constant": true},
          "alphaMode": {"value": "MASK", "constant": false},
          "other": {"value": [1, 2.5, null, true, {"container": {"a.b": [1.0]}}], "constant": false}
        },
        "textures": {"baseColorTexture": "tex/a%25b.png", "normalTexture": "file:///x/y.png", "emissiveTexture": ""}
      },
      "parameters": {"12": "a"}
    },
    {
      "id": 4, "type": 5703,
      "channels": {"0": {"on": true, "shader": {"parameters": {"1002": "tex/a.png"}}}, "5": {"on": false}},
      "parameters": {"2003": {"vector": [1.0, -0.0, 1e+300]}},
      "layers": [{"id": 526336, "shaders": {"3": {}, "12": {"parameters": {"1002": "b.png"}}}}, {"id": 526592}]
    }
  ],
  "objects": [
    {
      "id": 5, "type": 5100, "name": "Square", "position": [1.0, 2.0, 3.0], "rotation": [0.1, -0.2, 3.0],
      "scale": [2.0, 2.0, 0.5], "rotationOrder": 2,
      "base": {"offset": [9.0, 8.0, 7.0], "axisX": [0.0, 1.0, 0.0], "axisY": [1.0, 0.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
      "baseScale": [1.0, 1.0, 3.0],
      "matrix": {"offset": [0.5, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 4.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
      "editor": 1, "render": 2, "layer": 2, "parameters": {"929": 1, "930": {"vector4": [0.0, 0.25, 0.5, 1.0]}},
      "points": [0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.1, 0.0], "polygons": [0, 1, 2, 2, 0, 2, 3, 3],
      "tags": [
        {
          "id": 6, "type": 5711, "name": "Normals", "parameters": {"1": false}, "tracks": [{"id": [[1, 15, 3]]}],
          "normals": [
            0.1, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0,
            1.0
          ]
        },
        {
          "id": 7, "type": 5671,
          "uvws": [
            0.1000000000000001, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0,
            1.0, 0.0, 0.0, 1.0
          ]
        },
        {
          "id": 8, "type": 431000045, "perPoint": true,
          "colors": [0.1, 0.2, 0.3, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 1.0, 1.0, 1.0, 0.5, 0.5, 0.5, 0.5]
        },
        {"id": 9, "type": 5673, "name": "All", "polygons": [[0, 1]]}, {"id": 10, "type": 5616, "material": 4},
        {"id": 11, "type": 5612, "on": false, "limit": true, "angle": 0.7},
        {
          "id": 12, "type": 1019365, "joints": [17, null, 17], "weights": [[[0, 0.5], [3, 1.0]], [], [[1, 0.25]]],
          "bind": {
            "object": {"offset": [1.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
            "joints": [
              {"offset": [2.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
              {"offset": [3.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
              {"offset": [4.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]}
            ]
          }
        },
        {
          "id": 13, "type": 1024237,
          "morphs": [
            {"name": "Base", "strength": 0.0, "points": [1.0, 2.0, 3.0]}, {"name": "Smile", "strength": 0.5, "object": 19}
          ]
        },
        {"id": 14, "type": 4242, "name": "Of some other host", "parameters": {"1": 9223372036854775807, "2": {"float": "inf"}}}
      ],
      "tracks": [
        {
          "id": [[903, 23, 0], [1000, 19, 0]],
          "keys": [
            {
              "time": [0, 1], "value": 1.5, "interpolation": 1, "left": {"time": [-1, 10], "value": 0.25},
              "right": {"time": [0.1, 1], "value": -2.0}
            },
            {
              "time": [1, 2], "value": 2.0, "interpolation": 3, "rotationMode": [1, true, false], "auxiliaryMode": 4,
              "parameters": {"5": 1}
            }
          ]
        },
        {
          "id": [[100004812, 0, 0]],
          "keys": [{"time": [0, 1], "value": 0.0, "interpolation": 2, "points": [1.0, 0.0, 0.0, {"float": "nan"}, 0.0, 0.0]}]
        }
      ],
      "children": [
        {
          "id": 15, "type": 5140, "name": "",
          "matrix": {"offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
          "children": [
            {
              "id": 16, "type": 5126, "name": "Again",
              "matrix": {
                "offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]
              },
              "reference": 5
            }
          ]
        },
        {
          "id": 17, "type": 1019362, "name": "Joint",
          "matrix": {"offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]}
        }
      ]
    },
    {
      "id": 18, "type": 777, "name": "Unknown",
      "matrix": {"offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]}
    },
    {
      "id": 19, "type": 5100, "name": "Target",
      "matrix": {"offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
      "tags": [{"id": 20, "type": 431000045, "perPoint": false}]
    }
  ],
  "takes": [
    {"name": "Main", "main": true},
    {
      "name": "Walk", "current": true,
      "overrides": [
        {"target": 17, "values": {"903.1000": 1.0}, "tracks": [{"id": [[904, 23, 0], [1002, 19, 0]], "keys": []}]},
        {"target": null}
      ]
    }
  ]
}
)";

}  // namespace q7z::test
