#include <reference_suite/installer/suite_icon.h>

#include <reference_suite/installer/icon_file.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

constexpr IconPicture Pictures[] = {{32, 4}, {32, 32}, {16, 4}, {16, 32}};

constexpr RGBQUAD Rim = {128, 0, 0, 255}, Sea = {255, 128, 0, 255}, Land = {0, 160, 0, 255},
                  Spot = {255, 255, 255, 255};

// In 64ths of the side, from the middle.
RGBQUAD Globe(int side, int x, int y) {
    const int right = (2 * x + 1) * 64 / side - 64, down = (2 * y + 1) * 64 / side - 64;
    const int distance = right * right + down * down;
    if (distance > 62 * 62) return {};
    if (distance > 54 * 54) return Rim;
    if ((right + 20) * (right + 20) + (down + 24) * (down + 24) < 10 * 10) return Spot;
    const bool is_land = (right + down / 2) / 24 % 2 == 0 && down > -30 && down < 36;
    return is_land ? Land : Sea;
}

} // namespace

std::string Write_Suite_Icon(const std::string &path) {
    const std::string aside = path + ".new" + std::to_string(getpid());
    std::ofstream file(aside, std::ios::binary);
    file << Icon_File({std::begin(Pictures), std::end(Pictures)}, Globe);
    file.close();
    std::error_code error = file ? std::error_code() : std::make_error_code(std::errc::io_error);
    if (!error) std::filesystem::rename(aside, path, error);
    if (!error) return {};
    std::error_code ignored;
    std::filesystem::remove(aside, ignored);
    return path + " cannot be written: " + error.message();
}
