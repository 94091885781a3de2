// Small loops, choppy and not, as the files that fuzzing starts from.
#include "support/ocean/ocean_wave_field.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

using namespace SUPPORT;

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: support_ocean_seeds FOLDER\n";
        return 2;
    }
    CREST_PARAMETERS const crests = {1, {}, 0, 0.5f, 0.05f};
    for (bool const choppy : {false, true}) {
        std::string const path = std::string(arguments[1]) + (choppy ? "/choppy" : "/smooth");
        OCEAN_WAVE_FIELD({path.c_str(), 16, 2, 2, 20, choppy, choppy}, {1, 0, 6, 0.02f, 0}, crests, true);
        // In front of the file stands the byte that chooses the size of the windows.
        std::ifstream file(path, std::ios::binary);
        std::string const bytes(std::istreambuf_iterator<char>(file), {});
        std::ofstream(path, std::ios::binary) << 'w' << bytes;
        if (bytes.empty())
            return 1;
    }
    return 0;
}
