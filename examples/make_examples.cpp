// Writes the example pair of the README: a small original font and a modified
// build of it with a few typical changes.
#include <cstdio>
#include <string>

#include "support/FontBuilder.h"

int main(int argc, char* argv[]) {
    std::string directory = argc > 1 ? argv[1] : ".";
    FontTables original = SampleFont("Vell Example Regular", "Version 1.000");
    original["kern"] = TableWriter().U16(0).U16(1).U16(0).U16(20).U16(0x0001).U16(1).U16(12).U16(0).U16(6)
                           .U16(2).U16(3).U16(static_cast<uint16_t>(-80));
    original["hsty"] = TableWriter().U32(0x00010000).U16(0).U16(40).U16(20).Zeros(12);

    FontTables modified = SampleFont("Vell Example Regular", "Version 1.001");
    modified["kern"] = original["kern"];
    SetU16(modified["kern"], 22, static_cast<uint16_t>(-120));  // A-B kerning tightened
    SetU32(modified["head"], 4, 0x00010042);                   // font revision
    SetU32(modified["head"], 32, 3140000000u + 86400 * 30);    // rebuilt a month later
    SetU16(modified["hhea"], 4, 1950);                         // taller ascent
    SetU16(modified["hmtx"], 8, 1180);                         // 'A' narrower
    SetU16(modified["OS/2"], 4, 500);                          // weight class
    modified["post"] = MakePost({".notdef", "space", "A", "B.alt"});
    modified["DSIG"] = TableWriter().U32(1).U16(0).U16(0);
    std::string postScriptName = "VellExample-Regular";
    modified["name"] = MakeName({{1, "Vell Example"}, {2, "Regular"}, {4, "Vell Example Regular"},
                                 {5, "Version 1.001"}, {6, postScriptName}});
    original["name"] = MakeName({{1, "Vell Example"}, {2, "Regular"}, {4, "Vell Example Regular"},
                                 {5, "Version 1.000"}, {6, postScriptName}});

    for (auto& [name, font] : {std::pair{"original.ttf", &original}, std::pair{"modified.ttf", &modified}}) {
        Bytes bytes = BuildSfnt(*font);
        std::string path = directory + "/" + name;
        FILE* file = std::fopen(path.c_str(), "wb");
        if (file == nullptr) return 1;
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
    return 0;
}
