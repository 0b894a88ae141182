// Runs a target once for every file, and every file of every folder, that is named: no engine, any compiler.

#include "Fuzz.h"

#include <filesystem>

int main(int argc, char** argv)
{
    int inputs = 0;
    const auto replay = [&](const std::filesystem::path& path)
    {
        std::fprintf(stderr, "%s\n", path.string().c_str());
        const test::Bytes bytes = test::ReadFile(path.string());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++inputs;
    };
    for (int i = 1; i < argc; ++i)
    {
        if (!std::filesystem::is_directory(argv[i]))
            replay(argv[i]);
        else
            for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
                replay(entry.path());
    }
    std::fprintf(stderr, "%d inputs\n", inputs);
    return inputs == 0;
}
