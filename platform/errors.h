#pragma once
// Result codes of the machine, each typed once and used by name.
//
// The small positive numbers are what registry calls return and GetLastError tells. The negative ones are
// COM's; they are spelled as `long`, because 0x8007000E is an unsigned number at this word size.

#include <platform/types.h>

inline constexpr long ERROR_SUCCESS = 0;
inline constexpr long NO_ERROR = 0;
inline constexpr long ERROR_INVALID_FUNCTION = 1;
inline constexpr long ERROR_FILE_NOT_FOUND = 2;
inline constexpr long ERROR_PATH_NOT_FOUND = 3;
inline constexpr long ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr long ERROR_ACCESS_DENIED = 5;
inline constexpr long ERROR_INVALID_HANDLE = 6;
inline constexpr long ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr long ERROR_BAD_FORMAT = 11;
inline constexpr long ERROR_INVALID_DATA = 13;
inline constexpr long ERROR_OUTOFMEMORY = 14;
inline constexpr long ERROR_INVALID_DRIVE = 15;
inline constexpr long ERROR_NOT_SAME_DEVICE = 17;
inline constexpr long ERROR_NO_MORE_FILES = 18;
inline constexpr long ERROR_WRITE_FAULT = 29;
inline constexpr long ERROR_READ_FAULT = 30;
inline constexpr long ERROR_GEN_FAILURE = 31;
inline constexpr long ERROR_SHARING_VIOLATION = 32;
inline constexpr long ERROR_DUP_NAME = 52;
inline constexpr long ERROR_BAD_NETPATH = 53;
inline constexpr long ERROR_FILE_EXISTS = 80;
inline constexpr long ERROR_INVALID_PARAMETER = 87;
inline constexpr long ERROR_DISK_FULL = 112;
inline constexpr long ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr long ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr long ERROR_INVALID_NAME = 123;
inline constexpr long ERROR_MOD_NOT_FOUND = 126;
inline constexpr long ERROR_PROC_NOT_FOUND = 127;
inline constexpr long ERROR_DIR_NOT_EMPTY = 145;
inline constexpr long ERROR_BAD_PATHNAME = 161;
inline constexpr long ERROR_ALREADY_EXISTS = 183;
inline constexpr long ERROR_BAD_EXE_FORMAT = 193;
inline constexpr long ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr long ERROR_MORE_DATA = 234;
inline constexpr long ERROR_NO_MORE_ITEMS = 259;
inline constexpr long ERROR_DIRECTORY = 267;
inline constexpr long ERROR_NOT_OWNER = 288;
inline constexpr long ERROR_INVALID_ADDRESS = 487;
inline constexpr long ERROR_NOACCESS = 998; // memory that cannot be read
inline constexpr long ERROR_INVALID_FLAGS = 1004;
inline constexpr long ERROR_FILE_INVALID = 1006;
inline constexpr long ERROR_NO_TOKEN = 1008;
inline constexpr long ERROR_BADDB = 1009;
inline constexpr long ERROR_BADKEY = 1010;
inline constexpr long ERROR_CANTOPEN = 1011;
inline constexpr long ERROR_KEY_DELETED = 1018;
inline constexpr long ERROR_SERVICE_REQUEST_TIMEOUT = 1053;
inline constexpr long ERROR_DLL_INIT_FAILED = 1114;
inline constexpr long ERROR_MAPPED_ALIGNMENT = 1132;
inline constexpr long ERROR_NOT_FOUND = 1168;
inline constexpr long ERROR_REVISION_MISMATCH = 1306;
inline constexpr long ERROR_INVALID_SID = 1337;
inline constexpr long ERROR_FILE_CORRUPT = 1392;
inline constexpr long ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr long ERROR_INVALID_MENU_HANDLE = 1401;
inline constexpr long ERROR_INVALID_CURSOR_HANDLE = 1402; // or icon
inline constexpr long ERROR_TLW_WITH_WSCHILD = 1406;
inline constexpr long ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr long ERROR_WINDOW_OF_OTHER_THREAD = 1408;
inline constexpr long ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr long ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr long ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr long ERROR_INVALID_INDEX = 1413;
inline constexpr long ERROR_CONTROL_ID_NOT_FOUND = 1421;
inline constexpr long ERROR_CHILD_WINDOW_MENU = 1436;
inline constexpr long ERROR_INVALID_MSGBOX_STYLE = 1438;
inline constexpr long ERROR_INVALID_THREAD_ID = 1444;
inline constexpr long ERROR_MENU_ITEM_NOT_FOUND = 1456;
inline constexpr long ERROR_COMMITMENT_LIMIT = 1455;
inline constexpr long ERROR_NOT_GUI_PROCESS = 1471;
inline constexpr long ERROR_NOT_ENOUGH_QUOTA = 1816; // for another handle

inline constexpr long S_OK = 0;
inline constexpr long S_FALSE = 1;
inline constexpr long E_NOTIMPL = static_cast<long>(0x80004001u);
inline constexpr long E_NOINTERFACE = static_cast<long>(0x80004002u);
inline constexpr long E_POINTER = static_cast<long>(0x80004003u);
inline constexpr long E_FAIL = static_cast<long>(0x80004005u);
inline constexpr long E_UNEXPECTED = static_cast<long>(0x8000FFFFu);
inline constexpr long E_ACCESSDENIED = static_cast<long>(0x80070005u);
inline constexpr long E_OUTOFMEMORY = static_cast<long>(0x8007000Eu);
inline constexpr long E_INVALIDARG = static_cast<long>(0x80070057u);

inline constexpr long RPC_E_CALL_REJECTED = static_cast<long>(0x80010001u);
inline constexpr long RPC_E_SERVERFAULT = static_cast<long>(0x80010105u); // the server's code threw
inline constexpr long RPC_E_CHANGED_MODE =
    static_cast<long>(0x80010106u); // of a thread that uses COM already
inline constexpr long RPC_E_INVALIDMETHOD = static_cast<long>(0x80010107u); // no such slot
inline constexpr long RPC_E_DISCONNECTED =
    static_cast<long>(0x80010108u); // the object lets go of its clients
inline constexpr long RPC_E_INVALID_DATA = static_cast<long>(0x8001000Fu); // a message that makes no sense
inline constexpr long CLASS_E_NOAGGREGATION = static_cast<long>(0x80040110u);
inline constexpr long CLASS_E_CLASSNOTAVAILABLE = static_cast<long>(0x80040111u); // not of this module
inline constexpr long REGDB_E_CLASSNOTREG = static_cast<long>(0x80040154u);
inline constexpr long CO_E_NOTINITIALIZED = static_cast<long>(0x800401F0u);
inline constexpr long CO_E_CLASSSTRING = static_cast<long>(0x800401F3u);
inline constexpr long CO_E_ERRORINDLL = static_cast<long>(0x800401F9u); // a module without the entry
inline constexpr long CO_E_OBJNOTREG = static_cast<long>(0x800401FBu);
inline constexpr long HRESULT_MODULE_NOT_FOUND = static_cast<long>(0x8007007Eu);
inline constexpr long HRESULT_SERVER_UNAVAILABLE = static_cast<long>(0x800706BAu); // it has ended
inline constexpr long HRESULT_CALL_FAILED = static_cast<long>(0x800706BEu);        // it ended in the call
inline constexpr long CO_E_SERVER_EXEC_FAILURE = static_cast<long>(0x80080005u);   // it does not answer
