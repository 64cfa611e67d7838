#pragma once
// The records and entries of the telephony service, version 1.4, and of the remote-access service.
//
// The machine has neither of its own: they are modules, "TAPI32.DLL" and "Rasapi32.DLL", that whoever needs
// them loads and looks up by name. Entries of telephony answer 0 or one of the LINEERR_ codes, the one of
// remote access a code of errors.h.
//
// A record of telephony is the caller's, with its size in `dwTotalSize`. The service tells in `dwNeededSize`
// what all that it has would take, in `dwUsedSize` what it filled. Texts and lists stand behind the fixed
// part, by sizes in bytes, terminators included, and offsets from the record's start.

#include <platform/errors.h>
#include <platform/types.h>

using HLINEAPP = DWORD;

inline constexpr LONG LINEERR_BADDEVICEID = static_cast<LONG>(0x80000002u);
inline constexpr LONG LINEERR_INCOMPATIBLEAPIVERSION = static_cast<LONG>(0x8000000Cu);
inline constexpr LONG LINEERR_INCOMPATIBLEEXTVERSION = static_cast<LONG>(0x8000000Du);
inline constexpr LONG LINEERR_INIFILECORRUPT = static_cast<LONG>(0x8000000Eu);
inline constexpr LONG LINEERR_INVALADDRESS = static_cast<LONG>(0x80000010u);
inline constexpr LONG LINEERR_INVALAPPHANDLE = static_cast<LONG>(0x80000014u);
inline constexpr LONG LINEERR_INVALCARD = static_cast<LONG>(0x8000001Eu);
inline constexpr LONG LINEERR_INVALCOUNTRYCODE = static_cast<LONG>(0x80000022u);
inline constexpr LONG LINEERR_INVALLOCATION = static_cast<LONG>(0x8000002Du);
inline constexpr LONG LINEERR_INVALPARAM = static_cast<LONG>(0x80000032u);
inline constexpr LONG LINEERR_INVALPOINTER = static_cast<LONG>(0x80000035u);
inline constexpr LONG LINEERR_NODRIVER = static_cast<LONG>(0x80000043u);
inline constexpr LONG LINEERR_NOMEM = static_cast<LONG>(0x80000044u);
inline constexpr LONG LINEERR_OPERATIONFAILED = static_cast<LONG>(0x80000048u);
inline constexpr LONG LINEERR_OPERATIONUNAVAIL = static_cast<LONG>(0x80000049u);
inline constexpr LONG LINEERR_STRUCTURETOOSMALL = static_cast<LONG>(0x8000004Du);

// --- what the service tells of locations and devices ------------------------------------------------------

struct LINETRANSLATECAPS {
    DWORD dwTotalSize;
    DWORD dwNeededSize;
    DWORD dwUsedSize;
    DWORD dwNumLocations;
    DWORD dwLocationListSize;
    DWORD dwLocationListOffset; // of LINELOCATIONENTRY
    DWORD dwCurrentLocationID;
    DWORD dwNumCards;
    DWORD dwCardListSize;
    DWORD dwCardListOffset;
    DWORD dwCurrentPreferredCardID;
};
static_assert(sizeof(LINETRANSLATECAPS) == 44 && offsetof(LINETRANSLATECAPS, dwNumLocations) == 12 &&
              offsetof(LINETRANSLATECAPS, dwLocationListOffset) == 20);

inline constexpr DWORD LINELOCATIONOPTION_PULSEDIAL = 1;

/// Offsets count from the start of the LINETRANSLATECAPS.
struct LINELOCATIONENTRY {
    DWORD dwPermanentLocationID;
    DWORD dwLocationNameSize;
    DWORD dwLocationNameOffset;
    DWORD dwCountryCode;
    DWORD dwCityCodeSize;
    DWORD dwCityCodeOffset;
    DWORD dwPreferredCardID;
    DWORD dwLocalAccessCodeSize;
    DWORD dwLocalAccessCodeOffset;
    DWORD dwLongDistanceAccessCodeSize;
    DWORD dwLongDistanceAccessCodeOffset;
    DWORD dwTollPrefixListSize;
    DWORD dwTollPrefixListOffset;
    DWORD dwCountryID;
    DWORD dwOptions; // LINELOCATIONOPTION_
    DWORD dwCancelCallWaitingSize;
    DWORD dwCancelCallWaitingOffset;
};
static_assert(sizeof(LINELOCATIONENTRY) == 68 && offsetof(LINELOCATIONENTRY, dwLocationNameOffset) == 8 &&
              offsetof(LINELOCATIONENTRY, dwCountryID) == 52);

struct LINEDIALPARAMS {
    DWORD dwDialPause;
    DWORD dwDialSpeed;
    DWORD dwDigitDuration;
    DWORD dwWaitForDialtone;
};

inline constexpr DWORD STRINGFORMAT_ASCII = 1;
inline constexpr DWORD STRINGFORMAT_DBCS = 2;
inline constexpr DWORD STRINGFORMAT_UNICODE = 3;
inline constexpr DWORD STRINGFORMAT_BINARY = 4;

struct LINEDEVCAPS {
    DWORD dwTotalSize;
    DWORD dwNeededSize;
    DWORD dwUsedSize;
    DWORD dwProviderInfoSize;
    DWORD dwProviderInfoOffset;
    DWORD dwSwitchInfoSize;
    DWORD dwSwitchInfoOffset;
    DWORD dwPermanentLineID;
    DWORD dwLineNameSize;
    DWORD dwLineNameOffset;
    DWORD dwStringFormat; // STRINGFORMAT_
    DWORD dwAddressModes;
    DWORD dwNumAddresses;
    DWORD dwBearerModes;
    DWORD dwMaxRate;
    DWORD dwMediaModes;
    DWORD dwGenerateToneModes;
    DWORD dwGenerateToneMaxNumFreq;
    DWORD dwGenerateDigitModes;
    DWORD dwMonitorToneMaxNumFreq;
    DWORD dwMonitorToneMaxNumEntries;
    DWORD dwMonitorDigitModes;
    DWORD dwGatherDigitsMinTimeout;
    DWORD dwGatherDigitsMaxTimeout;
    DWORD dwMedCtlDigitMaxListSize;
    DWORD dwMedCtlMediaMaxListSize;
    DWORD dwMedCtlToneMaxListSize;
    DWORD dwMedCtlCallStateMaxListSize;
    DWORD dwDevCapFlags;
    DWORD dwMaxNumActiveCalls;
    DWORD dwAnswerMode;
    DWORD dwRingModes;
    DWORD dwLineStates;
    DWORD dwUUIAcceptSize;
    DWORD dwUUIAnswerSize;
    DWORD dwUUIMakeCallSize;
    DWORD dwUUIDropSize;
    DWORD dwUUISendUserUserInfoSize;
    DWORD dwUUICallInfoSize;
    LINEDIALPARAMS MinDialParams;
    LINEDIALPARAMS MaxDialParams;
    LINEDIALPARAMS DefaultDialParams;
    DWORD dwNumTerminals;
    DWORD dwTerminalCapsSize;
    DWORD dwTerminalCapsOffset;
    DWORD dwTerminalTextEntrySize;
    DWORD dwTerminalTextSize;
    DWORD dwTerminalTextOffset;
    DWORD dwDevSpecificSize;
    DWORD dwDevSpecificOffset;
    DWORD dwLineFeatures;
};
static_assert(sizeof(LINEDEVCAPS) == 240 && offsetof(LINEDEVCAPS, dwLineNameSize) == 32 &&
              offsetof(LINEDEVCAPS, dwStringFormat) == 40 && offsetof(LINEDEVCAPS, MinDialParams) == 156 &&
              offsetof(LINEDEVCAPS, dwNumTerminals) == 204);

struct LINEEXTENSIONID {
    DWORD dwExtensionID0;
    DWORD dwExtensionID1;
    DWORD dwExtensionID2;
    DWORD dwExtensionID3;
};
static_assert(sizeof(LINEEXTENSIONID) == 16);

// --- translating an address -------------------------------------------------------------------------------

inline constexpr DWORD LINETRANSLATEOPTION_CARDOVERRIDE = 1;
inline constexpr DWORD LINETRANSLATEOPTION_CANCELCALLWAITING = 2;
inline constexpr DWORD LINETRANSLATEOPTION_FORCELOCAL = 4;
inline constexpr DWORD LINETRANSLATEOPTION_FORCELD = 8;

inline constexpr DWORD LINETRANSLATERESULT_CANONICAL = 0x1;
inline constexpr DWORD LINETRANSLATERESULT_INTERNATIONAL = 0x2;
inline constexpr DWORD LINETRANSLATERESULT_LONGDISTANCE = 0x4;
inline constexpr DWORD LINETRANSLATERESULT_LOCAL = 0x8;
inline constexpr DWORD LINETRANSLATERESULT_NOTRANSLATION = 0x800;

struct LINETRANSLATEOUTPUT {
    DWORD dwTotalSize;
    DWORD dwNeededSize;
    DWORD dwUsedSize;
    DWORD dwDialableStringSize;
    DWORD dwDialableStringOffset;
    DWORD dwDisplayableStringSize;
    DWORD dwDisplayableStringOffset;
    DWORD dwCurrentCountry;
    DWORD dwDestCountry;
    DWORD dwTranslateResults; // LINETRANSLATERESULT_
};
static_assert(sizeof(LINETRANSLATEOUTPUT) == 40 &&
              offsetof(LINETRANSLATEOUTPUT, dwDialableStringOffset) == 16 &&
              offsetof(LINETRANSLATEOUTPUT, dwDisplayableStringOffset) == 24);

// --- the entries of telephony, named as these with a small "l" --------------------------------------------

using LINECALLBACK = void (*)(DWORD device, DWORD message, DWORD instance, DWORD parameter1, DWORD parameter2,
                              DWORD parameter3);

using LineInitialize = LONG(HLINEAPP *application, HINSTANCE instance, LINECALLBACK callback, LPCSTR name,
                            DWORD *device_count);
using LineNegotiateAPIVersion = LONG(HLINEAPP application, DWORD device, DWORD lowest, DWORD highest,
                                     DWORD *version, LINEEXTENSIONID *extension);
using LineGetDevCaps = LONG(HLINEAPP application, DWORD device, DWORD version, DWORD extension_version,
                            LINEDEVCAPS *caps);
using LineGetTranslateCaps = LONG(HLINEAPP application, DWORD version, LINETRANSLATECAPS *caps);
using LineSetCurrentLocation = LONG(HLINEAPP application, DWORD location);
using LineTranslateAddress = LONG(HLINEAPP application, DWORD device, DWORD version, LPCSTR address,
                                  DWORD card, DWORD options, LINETRANSLATEOUTPUT *output);

// --- remote access ----------------------------------------------------------------------------------------

inline constexpr long ERROR_BUFFER_TOO_SMALL = 603;
inline constexpr long ERROR_INVALID_SIZE = 632;

inline constexpr int RAS_MaxDeviceType = 16;
inline constexpr int RAS_MaxDeviceName = 128;

/// `dwSize` says which edition of the record the caller knows: 152.
struct RASDEVINFOA {
    DWORD dwSize;
    char szDeviceType[RAS_MaxDeviceType + 1];
    char szDeviceName[RAS_MaxDeviceName + 1];
};
static_assert(sizeof(RASDEVINFOA) == 152 && offsetof(RASDEVINFOA, szDeviceType) == 4 &&
              offsetof(RASDEVINFOA, szDeviceName) == 21);

/// "RasEnumDevicesA": `*size` in bytes, of the array and then of what all devices take; a null array with
/// size 0 asks for that and is ERROR_BUFFER_TOO_SMALL where there are any.
using RasEnumDevices = DWORD(RASDEVINFOA *devices, DWORD *size, DWORD *count);
