#include <reference_suite/programs/road/narrator.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

std::string chapter = "a second process";

} // namespace

void Begin_Chapter(const std::string &title) {
    chapter = title;
    std::printf("\n%s\n", title.c_str());
    std::fflush(stdout);
}

void Tell(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::printf("  ");
    std::vprintf(format, arguments);
    std::printf("\n");
    va_end(arguments);
    std::fflush(stdout);
}

void Require(bool as_it_should_be, const char *what) {
    if (as_it_should_be) return;
    std::fflush(stdout);
    std::fprintf(stderr, "\nThe road ends here, in \"%s\": not so: %s.\n", chapter.c_str(), what);
    std::exit(1);
}

void Require_Success(long code, const char *what) {
    if (code == 0) return;
    char coded[12];
    std::snprintf(coded, sizeof coded, "%08lX", static_cast<unsigned long>(code));
    Require(false, (std::string(what) + " (code " + coded + ")").c_str());
}
