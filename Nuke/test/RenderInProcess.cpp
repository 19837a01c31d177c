#include <fstream>
#include <iostream>

#include "Support/SampleFrame.h"

/// Renders the sample frame with the nodes that are linked in: RenderInProcess CLASS CLIP OUTPUT
int main(int argc, char** argv) {
    if (argc != 4) return 2;
    std::string error;
    const std::vector<float> frame = renderSampleFrame("", argv[1], argv[2], error);
    if (frame.empty()) {
        std::cerr << error << "\n";
        return 1;
    }
    std::ofstream output(argv[3], std::ios::binary);
    output.write(reinterpret_cast<const char*>(frame.data()),
                 static_cast<std::streamsize>(frame.size() * sizeof(float)));
    return output.flush() ? 0 : 1;
}
