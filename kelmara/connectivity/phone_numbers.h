#pragma once
// Canonical telephone numbers, as "+1 (206) 555-1212": their fields, and what is dialled for them.

#include <kelmara/api.h>

/// Splits a number at its separators, the bracket behind the area code among them; what is in the fields is
/// not looked at, and the rest behind a line number is ignored. Each output has 255 bytes, which a longer
/// field is cut to, or is null. 0; 0x80070057 when the number does not begin with "+", or is null; 0x8000FFFF
/// when a field is missing or empty: the outputs of the fields in front of it are filled then, the others
/// untouched. Any thread may call.
KELMARA_API long Parse_Canonical_Number(const char *number, char *country, char *area, char *exchange,
                                        char *line);

/// Makes `location` the current one (tapi.h) and has the telephony service translate a number from there,
/// with call waiting cancelled: what the modem dials, and what the user is shown. Each output has 256 bytes
/// or is null, and becomes empty when the translation fails, when there is no service, when Setup_TAPI was
/// not called, and when the translation does not fit into the 216 bytes that it has. Without outputs the
/// location is made the current one all the same. A null number is an empty one. Calls with different
/// locations must not overlap.
KELMARA_API void Create_Dial_Number(const char *number, const char *location, char *dialable,
                                    char *displayable);
