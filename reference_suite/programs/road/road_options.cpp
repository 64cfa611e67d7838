#include <reference_suite/programs/road/road_options.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr char Usage[] =
    "usage: road FOLDER [--lang LANGUAGE] [--from LOCATION] [--config NAME]\n"
    "Makes a machine in FOLDER, which is new or empty, and shows on it what the library does.\n"
    "    --lang     en or de: the language of the call's status texts\n"
    "    --from     Home, Office or Hotel: where the call is made from\n"
    "    --config   Home, Travel or \"Office LAN\": the configuration that it is made with\n";

bool Take_Language(RoadOptions &options, const char *value) {
    const bool german = std::strcmp(value, "de") == 0;
    if (german) options.string_table = "german.ltx";
    return german || std::strcmp(value, "en") == 0;
}

bool Take_Location(RoadOptions &options, const char *value) {
    options.location = value;
    return *value;
}

bool Take_Configuration(RoadOptions &options, const char *value) {
    options.configuration = value;
    return *value;
}

constexpr struct {
    const char *name;
    bool (*take)(RoadOptions &options, const char *value);
} Options[] = {{"--lang", Take_Language}, {"--from", Take_Location}, {"--config", Take_Configuration}};

bool Take(RoadOptions &options, const char *name, const char *value) {
    for (const auto &each : Options) {
        if (std::strcmp(name, each.name) == 0) return value && each.take(options, value);
    }
    return false;
}

bool Take_All(int argc, char **argv, RoadOptions &options) {
    if (argc < 2 || argv[1][0] == '-') return false;
    options.folder = argv[1];
    for (int i = 2; i < argc; i += 2) {
        if (!Take(options, argv[i], argv[i + 1])) return false; // behind the last one stands a null
    }
    return true;
}

} // namespace

bool Read_Options(int argc, char **argv, RoadOptions &options) {
    const bool understood = Take_All(argc, argv, options);
    if (!understood) std::fputs(Usage, stderr);
    return understood;
}
