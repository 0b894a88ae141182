// Times the INI reader on a file of 2000 keys in 100 sections: parsing the file, and lookups by both engines.
// Other libraries that are installed are timed at the same work.

#include "ZelUtil/INIFileReader.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#if defined(HAVE_GLIB)
#include <glib.h>
#endif
#if defined(HAVE_INIPARSER)
#include <iniparser/iniparser.h>
#endif

namespace
{

constexpr int kSections = 100;
constexpr int kKeys = 20;

struct Request
{
    CStdStr<char> section, key, value;
};

const std::string& File()
{
    static const std::string path = (std::filesystem::temp_directory_path() / "zelutil-bench.ini").string();
    return path;
}

// Writes the file. Returns a request for each of its keys, once, in a scattered order: 769 and the number of
// keys have no common divisor.
std::vector<Request> MakeFile(char commentMark = ';')
{
    std::ofstream file(File());
    std::vector<Request> requests;
    for (int section = 0; section < kSections; ++section)
    {
        const std::string sectionName = "section " + std::to_string(section);
        file << '[' << sectionName << "]\n" << commentMark << " a comment\n";
        for (int key = 0; key < kKeys; ++key)
        {
            const std::string keyName = "some key " + std::to_string(key);
            const std::string value = std::to_string(section * kKeys + key);
            file << keyName << '=' << value << '\n';
            requests.push_back({sectionName, keyName, value});
        }
    }
    std::vector<Request> mixed;
    for (std::size_t i = 0; i < requests.size(); ++i)
        mixed.push_back(requests[i * 769 % requests.size()]);
    return mixed;
}

void LookUp(benchmark::State& state, bool indexed)
{
    const std::vector<Request> requests = MakeFile();
    INIFileReader reader;
    CStdStr<char> value;
    const CStdStr<char> file = File();
    std::size_t i = 0;
    for (const Request& request : requests)
        if (!reader.getStringFromIni(file, request.section, request.key, &value, indexed, false) ||
            value != request.value)
            return state.SkipWithError("wrong value");
    for ([[maybe_unused]] auto _ : state)
    {
        const Request& request = requests[i++ % requests.size()];
        benchmark::DoNotOptimize(
            reader.getStringFromIni(file, request.section, request.key, &value, indexed, false));
    }
    state.SetItemsProcessed(state.iterations());
}

void Parse(benchmark::State& state)
{
    const std::vector<Request> requests = MakeFile();
    INIFileReader reader;
    CStdStr<char> value;
    const CStdStr<char> file = File();
    for ([[maybe_unused]] auto _ : state)
    {
        reader.end_profile_string();
        benchmark::DoNotOptimize(
            reader.getStringFromIni(file, requests[0].section, requests[0].key, &value, true, false));
    }
    if (value != requests[0].value)
        return state.SkipWithError("wrong value");
    state.SetItemsProcessed(state.iterations() * kSections * kKeys);
}

BENCHMARK(Parse)->Name("INI parse/library");
BENCHMARK_CAPTURE(LookUp, indexed, true)->Name("INI lookup, indexed/library");
BENCHMARK_CAPTURE(LookUp, direct, false)->Name("INI lookup, direct/library");

#if defined(HAVE_INIPARSER)
void IniparserParse(benchmark::State& state)
{
    MakeFile();
    for ([[maybe_unused]] auto _ : state)
    {
        dictionary* const parsed = iniparser_load(File().c_str());
        benchmark::DoNotOptimize(parsed);
        iniparser_freedict(parsed);
    }
    state.SetItemsProcessed(state.iterations() * kSections * kKeys);
}

void IniparserLookUp(benchmark::State& state)
{
    std::vector<std::string> names;
    const std::vector<Request> requests = MakeFile();
    dictionary* const parsed = iniparser_load(File().c_str());
    for (const Request& request : requests)
    {
        names.push_back(request.section + ":" + request.key);
        if (request.value != iniparser_getstring(parsed, names.back().c_str(), ""))
            return state.SkipWithError("wrong value");
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(iniparser_getstring(parsed, names[i++ % names.size()].c_str(), nullptr));
    state.SetItemsProcessed(state.iterations());
    iniparser_freedict(parsed);
}

BENCHMARK(IniparserParse)->Name("INI parse/iniparser");
BENCHMARK(IniparserLookUp)->Name("INI lookup, indexed/iniparser");
#endif

#if defined(HAVE_GLIB)
void GLibParse(benchmark::State& state)
{
    MakeFile('#');
    for ([[maybe_unused]] auto _ : state)
    {
        GKeyFile* const parsed = g_key_file_new();
        if (!g_key_file_load_from_file(parsed, File().c_str(), G_KEY_FILE_NONE, nullptr))
            return state.SkipWithError("not parsed");
        g_key_file_free(parsed);
    }
    state.SetItemsProcessed(state.iterations() * kSections * kKeys);
}

void GLibLookUp(benchmark::State& state)
{
    const std::vector<Request> requests = MakeFile('#');
    GKeyFile* const parsed = g_key_file_new();
    g_key_file_load_from_file(parsed, File().c_str(), G_KEY_FILE_NONE, nullptr);
    const auto lookUp = [parsed](const Request& request)
    { return g_key_file_get_value(parsed, request.section.c_str(), request.key.c_str(), nullptr); };
    for (const Request& request : requests)
    {
        char* const value = lookUp(request);
        if (value == nullptr || request.value != value)
            return state.SkipWithError("wrong value");
        g_free(value);
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state)
        g_free(lookUp(requests[i++ % requests.size()]));
    state.SetItemsProcessed(state.iterations());
    g_key_file_free(parsed);
}

BENCHMARK(GLibParse)->Name("INI parse/GLib");
BENCHMARK(GLibLookUp)->Name("INI lookup, indexed/GLib");
#endif

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove(File());
}
