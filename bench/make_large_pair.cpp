// Writes the large benchmark pair to a directory, for timing whole runs of the
// tool side by side with a byte-level comparison.
#include <cstdio>
#include <string>

#include "LargeFonts.h"

int main(int argc, char* argv[]) {
    std::string directory = argc > 1 ? argv[1] : ".";
    for (auto [name, font] : {std::pair{"large-original.ttf", LargeFont()}, std::pair{"large-modified.ttf", LargeFontModified()}}) {
        Bytes bytes = BuildSfnt(font);
        FILE* file = std::fopen((directory + "/" + name).c_str(), "wb");
        if (file == nullptr) return 1;
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
    return 0;
}
