#include <platform/kernel/program_file.h>

#include <platform/errors.h>
#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/files/search_order.h>
#include <platform/kernel/command_line.h>

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace {

constexpr std::size_t Longest_Command_Line = 32767;

std::vector<std::string> File_Names(std::string name) {
    if (name.ends_with('.')) return {name.substr(0, name.size() - 1)};
    if (name.find('.') != std::string::npos) return {name};
    return {name + ".exe", name};
}

// A name as it stands in a command line.
long Look_For(std::string_view word, std::string &host_path) {
    const std::size_t separator = word.find_last_of("\\/:");
    const std::size_t leaf = separator == std::string_view::npos ? 0 : separator + 1;
    if (word.size() > Longest_Path_Text) return ERROR_FILENAME_EXCED_RANGE;
    if (leaf == word.size()) return ERROR_FILE_NOT_FOUND;
    const std::vector<std::string> names = File_Names(std::string(word.substr(leaf)));
    if (leaf == 0) {
        host_path = Find_File_By_Search(names);
        return host_path.empty() ? ERROR_FILE_NOT_FOUND : NO_ERROR;
    }
    HostPlace folder;
    const std::string folder_path(word.substr(0, leaf));
    if (const long error = Find_Place(folder_path.c_str(), folder); error != NO_ERROR) return error;
    host_path = Find_File_In(folder.host_path, names);
    if (!host_path.empty()) return NO_ERROR;
    struct stat status;
    if (stat(folder.host_path.c_str(), &status) == 0) return ERROR_FILE_NOT_FOUND;
    return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
}

// A program whose path has blanks and no quotes: each blank may be the one that ends it.
long Find_In_Line(std::string_view line, Start &start) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    std::string_view rest;
    std::string_view word = First_Word(line, rest);
    const bool quoted = line.starts_with('"');
    const long first_error = Look_For(word, start.program);
    for (long error = first_error; error != NO_ERROR; error = Look_For(word, start.program)) {
        if (quoted || rest.empty()) return first_error;
        const std::size_t end = std::min(line.find_first_of(" \t", word.size() + 1), line.size());
        word = line.substr(0, end);
        rest = line.substr(end);
    }
    start.arguments = Arguments_Of(rest);
    start.arguments.emplace(start.arguments.begin(), word);
    return NO_ERROR;
}

long Take_Program(LPCSTR program, Start &start) {
    HostPlace place;
    struct stat status;
    if (const long error = Find_Place(program, place); error != NO_ERROR) return error;
    if (stat(place.host_path.c_str(), &status) != 0) return Error_At(place.host_path, errno);
    if (!S_ISREG(status.st_mode)) return ERROR_ACCESS_DENIED;
    start.program = place.host_path;
    return NO_ERROR;
}

} // namespace

long Find_Program(LPCSTR program, LPCSTR command_line, Start &start) {
    const std::string_view line = command_line ? command_line : "";
    if (!program && !command_line) return ERROR_INVALID_PARAMETER;
    if (line.size() > Longest_Command_Line) return ERROR_FILENAME_EXCED_RANGE;
    if (!program) return Find_In_Line(line, start);
    if (const long error = Take_Program(program, start); error != NO_ERROR) return error;
    std::string_view rest;
    const std::string_view word = First_Word(line, rest);
    start.arguments = Arguments_Of(rest);
    start.arguments.emplace(start.arguments.begin(), line.empty() ? program : word);
    return NO_ERROR;
}
