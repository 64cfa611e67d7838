#include <reference_suite/services/telephony/countries.h>

namespace {

constexpr Country Countries[] = {
    {1, 1, "", "G", "1 (F) G", "011 E F G"},     // United States
    {107, 1, "", "G", "1 (F) G", "011 E F G"},   // Canada
    {31, 31, "0", "G", "0F G", "00 E F G"},      // Netherlands
    {33, 33, "0", "0F G", "0F G", "00 E F G"},   // France, where the area is always dialled
    {39, 39, "", "F G", "F G", "00 E F G"},      // Italy, where its 0 is part of it
    {41, 41, "0", "G", "0F G", "00 E F G"},      // Switzerland
    {43, 43, "0", "G", "0F G", "00 E F G"},      // Austria
    {44, 44, "0", "G", "0F G", "00 E F G"},      // United Kingdom
    {45, 45, "", "F G", "F G", "00 E F G"},      // Denmark, which has no areas of its own
    {46, 46, "0", "G", "0F G", "00 E F G"},      // Sweden
    {47, 47, "", "F G", "F G", "00 E F G"},      // Norway, neither
    {49, 49, "0", "G", "0F G", "00 E F G"},      // Germany
    {61, 61, "0", "G", "0F G", "0011 E F G"},    // Australia
    {81, 81, "0", "G", "0F G", "001 010 E F G"}, // Japan
    {353, 353, "0", "G", "0F G", "00 E F G"},    // Ireland
};

} // namespace

const Country *Country_By_Id(DWORD id) {
    for (const Country &country : Countries) {
        if (country.id == id) return &country;
    }
    return nullptr;
}

const Country *Country_By_Code(DWORD code) {
    for (const Country &country : Countries) {
        if (country.code == code) return &country;
    }
    return nullptr;
}
