#include <platform/gdi/objects.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <utility>

namespace {

struct StockFont {
    int number;
    LONG cell_height;
    LONG weight;
};

constexpr StockFont Stock_Fonts[] = {
    {ANSI_VAR_FONT, 13, FW_NORMAL}, {SYSTEM_FONT, 16, FW_BOLD}, {DEFAULT_GUI_FONT, 13, FW_NORMAL}};

// The font that is selected into a device context.
bool Find_Selected(HDC dc, Font &font) {
    const ObjectLock lock;
    const auto *const context = Find_Or_Tell<DeviceContext>(dc);
    return context && Find_Font(context->font, font);
}

} // namespace

bool Find_Font(HGDIOBJ handle, Font &font) {
    for (const StockFont &stock : Stock_Fonts) {
        if (handle != GetStockObject(stock.number)) continue;
        font = Font();
        font.cell_height = stock.cell_height;
        font.weight = stock.weight;
        return true;
    }
    const auto *const made = dynamic_cast<const FontObject *>(Find_Object(handle));
    if (made) font = made->font;
    return made != nullptr;
}

Font Font_Of_Handle(HFONT handle) {
    const ObjectLock lock;
    Font font;
    if (!Find_Font(handle, font)) Find_Font(GetStockObject(SYSTEM_FONT), font);
    return font;
}

extern "C" {

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) {
    const ObjectLock lock;
    auto *const context = Find_Or_Tell<DeviceContext>(dc);
    Font font;
    if (context && Find_Font(object, font)) return std::exchange(context->font, object);
    Tell_No_Such_Object();
    return nullptr;
}

HFONT CreateFontIndirectA(const LOGFONTA *wanted) {
    if (!wanted) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Within_Memory(HFONT(nullptr), [wanted] {
        const ObjectLock lock;
        auto made = std::make_unique<FontObject>();
        made->font = Font_Of(*wanted);
        return static_cast<HFONT>(Enter_Object(std::move(made)));
    });
}

BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int length, SIZE *size) {
    if (length < 0 || !text || !size) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    Font font;
    if (!Find_Selected(dc, font)) return FALSE;
    *size = {Width_Of(font, text, length), font.cell_height};
    return TRUE;
}

BOOL GetTextMetricsA(HDC dc, TEXTMETRICA *metrics) {
    if (!metrics) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    Font font;
    if (!Find_Selected(dc, font)) return FALSE;
    *metrics = Metrics_Of(font);
    return TRUE;
}
}
