#include <reference_suite/programs/road/narrator.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void Begin_Chapter(const std::string &title) {
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
    std::fprintf(stderr, "\nThe road ends here: not so: %s.\n", what);
    std::exit(1);
}
