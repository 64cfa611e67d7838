#pragma once
// Inside the library: a hash of all bytes of a short key, for indexes in memory. It may change at any time
// and is nothing to be stored. Keys can be made to hash alike: whoever indexes what others wrote bounds the
// way to a key's cell.

#include <cstdint>
#include <cstring>

inline constexpr unsigned long Longest_Way_To_A_Cell = 512; // cells; keys of good will never come near

inline std::uint32_t Hash_Word_At(const char *text) {
    std::uint32_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// Both halves of the product, so that every bit of both words tells.
inline std::uint32_t Mix_Hash_Words(std::uint32_t first, std::uint32_t second) {
    const std::uint64_t product = std::uint64_t{first} * second;
    return static_cast<std::uint32_t>(product) ^ static_cast<std::uint32_t>(product >> 32);
}

// Eight bytes at a time; the last step takes up to eight, those in the middle of four to seven twice.
inline std::uint32_t Hash_Of_Key(const char *key, std::size_t length) {
    constexpr std::uint32_t salt = 0x9E3779B1, other_salt = 0x85EBCA6B;
    std::uint32_t hash = salt ^ static_cast<std::uint32_t>(length);
    for (; length > 8; key += 8, length -= 8) {
        hash = Mix_Hash_Words(Hash_Word_At(key) ^ hash, Hash_Word_At(key + 4) ^ other_salt) + salt;
    }
    std::uint32_t first = 0, last = 0;
    if (length >= 4) {
        first = Hash_Word_At(key);
        last = Hash_Word_At(key + length - 4);
    } else {
        for (std::size_t i = 0; i < length; ++i) first = first << 8 | static_cast<unsigned char>(key[i]);
    }
    return Mix_Hash_Words(Mix_Hash_Words(first ^ hash, last ^ other_salt) ^ salt, other_salt);
}
