#pragma once
// An SVG picture in the making: rectangles, edges and texts in the colours of the machine's screen.
//
// Every text is stretched to the width that the machine's tables give it, so that a picture has the same
// layout wherever it is looked at. All may throw std::bad_alloc.

#include <platform/gdi.h>

#include <string>
#include <string_view>
#include <vector>

inline constexpr const char *Colour_Black = "#000000";
inline constexpr const char *Colour_White = "#ffffff";
inline constexpr const char *Colour_Face = "#d4d0c8";
inline constexpr const char *Colour_Shadow = "#808080";
inline constexpr const char *Colour_Dark = "#404040";
inline constexpr const char *Colour_Selection = "#0a246a";
inline constexpr const char *Colour_Pale_Caption = "#a6caf0";

enum class Across { Left, Centre, Right };
enum class Down { Top, Centre };
enum class EdgeKind { Raised, Sunken, Thin_Raised, Thin_Sunken, Etched };

struct TextLook {
    HFONT font = nullptr; // SYSTEM_FONT for null
    const char *colour = Colour_Black;
    bool enabled = true;
    bool prefix = false; // "&" underlines the character behind it
    bool wraps = false;
    Across across = Across::Left;
    Down down = Down::Top;
};

class Picture {
  public:
    explicit Picture(SIZE size);
    /// What follows has its corner there and is cut to the size, until Leave.
    void Enter(const RECT &place);
    void Leave();

    void Fill(const RECT &place, const char *colour);
    void Outline(const RECT &place, const char *colour);
    void Edge(const RECT &place, EdgeKind kind);
    void Line(POINT from, POINT to, const char *colour, int width = 1);
    void Dot(POINT centre, int radius, const char *fill, const char *line);
    /// Small and black.
    void Arrow(POINT centre, bool up = false);
    void Caption_Bar(const RECT &place, bool active);
    /// Within `place`, of which it takes what the look says.
    void Text(const RECT &place, std::string_view text, const TextLook &look);

    std::string Finished() const { return svg_ + "</svg>\n"; }

  private:
    void One_Line(POINT at, std::string_view text, const TextLook &look, const char *colour);
    std::string svg_;
};

LONG Text_Width(HFONT font, std::string_view text);
/// The pieces of a text that Picture::Text puts below each other in a place of that width.
std::vector<std::string_view> Lines_Of_Text(std::string_view text, LONG width, const TextLook &look);
/// How far from the left such a piece begins.
LONG Shift_In(LONG place_width, LONG text_width, Across across);
/// WM_GETTEXT, whole.
std::string Text_Of_Window(HWND window);
/// Without what marks a mnemonic; its place in the result, or npos.
std::string Without_Prefix(std::string_view text, std::size_t &mnemonic);
