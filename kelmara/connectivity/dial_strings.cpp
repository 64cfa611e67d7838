#include <kelmara/connectivity/phone_numbers.h>

#include <kelmara/connectivity/sized_record.h>
#include <kelmara/connectivity/tapi.h>
#include <kelmara/connectivity/telephony_entries.h>

#include <cstring>

namespace {

union TranslationRecord {
    LINETRANSLATEOUTPUT output;
    char bytes[256];
};

void Copy_Text(const TranslationRecord &record, unsigned long offset, char *out) {
    if (!out) return;
    const RecordText text = Text_In_Record(&record, sizeof record, offset);
    const unsigned long length = text.length < sizeof record ? text.length : sizeof record - 1;
    std::memcpy(out, text.start, length);
    out[length] = 0;
}

} // namespace

void Create_Dial_Number(const char *number, const char *location, char *dialable, char *displayable) {
    TranslationRecord record;
    std::memset(&record, 0, sizeof record);
    record.output.dwTotalSize = sizeof record;
    Set_Current_Dial_Location(location);
    const unsigned long device = Get_Current_Device_ID();
    const LineApplication &line = The_Line_Application;
    Line_Translate_Address(line.handle, device, line.api_version, number ? number : "", 0,
                           LINETRANSLATEOPTION_CANCELCALLWAITING, &record.output);
    Copy_Text(record, record.output.dwDialableStringOffset, dialable);
    Copy_Text(record, record.output.dwDisplayableStringOffset, displayable);
}
