#pragma once
// Pairs of small and capital letters in the system's code page 1252.

constexpr unsigned Capital_Of(unsigned byte) {
    if (byte >= 'a' && byte <= 'z') return byte - 0x20;
    if (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7) return byte - 0x20;
    if (byte == 0xFF) return 0x9F;
    if (byte == 0x9A || byte == 0x9C || byte == 0x9E) return byte - 0x10;
    return byte;
}
