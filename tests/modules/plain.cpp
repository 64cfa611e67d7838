// A module that does nothing but hold a number, called by its address and by its name.

extern "C" {
__attribute__((visibility("default"))) int answer_word = 42;
__attribute__((visibility("default"))) int Answer() {
    return answer_word;
}
}
