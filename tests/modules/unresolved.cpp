// A module that needs what nobody has.

extern "C" {
int Nobody_Has_This();
__attribute__((visibility("default"))) int Call_Nobody() {
    return Nobody_Has_This();
}
}
