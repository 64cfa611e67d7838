#include <platform/security.h>

#include <tests/support/handles.h>
#include <tests/support/test_machine.h>

#include <cstring>

namespace {

using Tokens = MachineTest;
using Versions = MachineTest;

TEST_F(Tokens, AreRefusedToWhatHasNone) {
    HANDLE token = nullptr;
    DWORD needed = 0;
    EXPECT_EQ(Error_Of(OpenThreadToken(nullptr, TOKEN_QUERY, FALSE, &token)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token)), ERROR_NO_TOKEN);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, nullptr);
    EXPECT_EQ(Error_Of(OpenProcessToken(mutex, TOKEN_QUERY, &token)), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(CloseHandle(mutex));

    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, GetCurrentProcessId());
    ASSERT_TRUE(OpenProcessToken(process, 0, &token));
    EXPECT_EQ(Error_Of(GetTokenInformation(token, TokenGroups, nullptr, 0, &needed)), ERROR_ACCESS_DENIED)
        << "not opened for that";
    EXPECT_EQ(
        Error_Of(GetTokenInformation(token, static_cast<TOKEN_INFORMATION_CLASS>(1), nullptr, 0, &needed)),
        ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WaitForSingleObject(token, 0), WAIT_FAILED);
    CloseHandle(token);
    ASSERT_TRUE(OpenProcessToken(process, TOKEN_QUERY, &token));
    EXPECT_EQ(Error_Of(GetTokenInformation(token, TokenGroups, nullptr, 0, &needed)),
              ERROR_INSUFFICIENT_BUFFER);
    std::vector<DWORD> block(needed / 4 + 1, 0xDDDDDDDD);
    EXPECT_FALSE(GetTokenInformation(token, TokenGroups, block.data(), needed - 1, &needed));
    EXPECT_TRUE(GetTokenInformation(token, TokenGroups, block.data(), needed, &needed));
    EXPECT_EQ(block.back(), 0xDDDDDDDDu);
    CloseHandle(token);
    machine.Set("windows", "me");
    EXPECT_EQ(Error_Of(OpenProcessToken(process, TOKEN_QUERY, &token)), ERROR_CALL_NOT_IMPLEMENTED);
    CloseHandle(process);
}

TEST(Identifiers, AreMadeAndCompared) {
    const auto Make = [](BYTE count, DWORD last) {
        SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
        PSID sid = nullptr;
        EXPECT_TRUE(AllocateAndInitializeSid(&authority, count, 32, last, 3, 4, 5, 6, 7, 8, &sid));
        return sid;
    };
    const PSID one = Make(2, 544), same = Make(2, 544), other = Make(2, 545), longer = Make(8, 544);
    EXPECT_EQ(std::string(static_cast<const char *>(one), 16),
              std::string("\1\2\0\0\0\0\0\5\x20\0\0\0\x20\2\0\0", 16));
    EXPECT_TRUE(EqualSid(one, same));
    EXPECT_FALSE(EqualSid(one, other) || EqualSid(one, longer) || EqualSid(one, nullptr));
    PSID none = nullptr;
    EXPECT_EQ(Error_Of(AllocateAndInitializeSid(&SECURITY_NT_AUTHORITY, 9, 1, 2, 3, 4, 5, 6, 7, 8, &none)),
              ERROR_INVALID_SID);
    EXPECT_FALSE(none);
    for (const PSID sid : {one, same, other, longer, none}) EXPECT_EQ(FreeSid(sid), nullptr);
}

TEST_F(Versions, AreThoseOfTheSettings) {
    struct Row {
        const char *windows, *numbers;
        DWORD platform, major, minor, build;
    };
    for (const Row &row : {
             Row{nullptr, nullptr, 2, 5, 1, 2600},
             Row{"95", nullptr, 1, 4, 0, 0x040003B6},
             Row{"98", nullptr, 1, 4, 10, 0x040A07CE},
             Row{"ME", nullptr, 1, 4, 90, 0x045A0BB8},
             Row{"nt4", nullptr, 2, 4, 0, 1381},
             Row{"2000", nullptr, 2, 5, 0, 2195},
             Row{"nonsense", nullptr, 2, 5, 1, 2600},
             Row{"xp", "6.0.6000", 2, 6, 0, 6000},
             Row{"95", "4.0.1111", 1, 4, 0, 0x04000457},
             Row{"2000", "5.2", 2, 5, 2, 2195},
             Row{"2000", "-1.5", 2, 5, 0, 2195},
         }) {
        Override_Machine_Setting("windows", row.windows);
        Override_Machine_Setting("windows_version", row.numbers);
        OSVERSIONINFOA information;
        std::memset(&information, 0xDD, sizeof information);
        information.dwOSVersionInfoSize = 148;
        ASSERT_TRUE(GetVersionExA(&information));
        const auto told = std::vector<DWORD>{information.dwPlatformId, information.dwMajorVersion,
                                             information.dwMinorVersion, information.dwBuildNumber};
        EXPECT_EQ(told, (std::vector<DWORD>{row.platform, row.major, row.minor, row.build}))
            << (row.windows ? row.windows : "none");
        EXPECT_LT(std::strlen(information.szCSDVersion), 20u);
    }
    Override_Machine_Setting("windows", nullptr);
    Override_Machine_Setting("windows_version", nullptr);
    OSVERSIONINFOA information = {};
    for (const DWORD size : {147u, 149u}) {
        information.dwOSVersionInfoSize = size;
        EXPECT_EQ(Error_Of(GetVersionExA(&information)), ERROR_INSUFFICIENT_BUFFER);
    }
    EXPECT_EQ(information.dwMajorVersion, 0u);
    EXPECT_FALSE(GetVersionExA(nullptr));
}

} // namespace
