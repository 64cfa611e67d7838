#include <platform/kernel.h>
#include <platform/security.h>

#include <tests/support/test_machine.h>

#include <cstring>
#include <unistd.h>

namespace {

using Tokens = MachineTest;
using Versions = MachineTest;

std::string Last_Error() {
    return std::to_string(GetLastError());
}

// The groups of a token as "S-1-5-32-544 ...", or "error N".
std::string Groups_Of(HANDLE token) {
    DWORD needed = 0, again = 0;
    if (GetTokenInformation(token, TokenGroups, nullptr, 0, &needed)) return "no size";
    if (GetLastError() != static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER)) return "error " + Last_Error();
    std::vector<DWORD> block(needed / 4 + 1, 0xDDDDDDDD);
    EXPECT_FALSE(GetTokenInformation(token, TokenGroups, block.data(), needed - 1, &again));
    EXPECT_EQ(block[0], 0xDDDDDDDDu);
    EXPECT_TRUE(GetTokenInformation(token, TokenGroups, block.data(), needed, &again));
    EXPECT_EQ(block[needed / 4], 0xDDDDDDDDu);
    const auto *groups = reinterpret_cast<const TOKEN_GROUPS *>(block.data());
    std::string names;
    for (DWORD i = 0; i < groups->GroupCount; ++i) {
        EXPECT_TRUE(IsValidSid(groups->Groups[i].Sid));
        const auto *sid = static_cast<const SID *>(groups->Groups[i].Sid);
        names += " S-1-" + std::to_string(sid->IdentifierAuthority.Value[5]);
        for (int n = 0; n < sid->SubAuthorityCount; ++n) names += "-" + std::to_string(sid->SubAuthority[n]);
    }
    return names;
}

TEST_F(Tokens, TellTheAdministrators) {
    HANDLE token = nullptr;
    EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token));
    EXPECT_EQ(Last_Error(), std::to_string(ERROR_NO_TOKEN));
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    machine.Set("administrator", "yes");
    EXPECT_EQ(Groups_Of(token), " S-1-1-0 S-1-5-32-544 S-1-5-32-545");
    machine.Set("administrator", "no");
    EXPECT_EQ(Groups_Of(token), " S-1-1-0 S-1-5-32-545");
    machine.Set("administrator", "");
    if (geteuid() == 0) {
        EXPECT_NE(Groups_Of(token).find("S-1-5-32-544"), std::string::npos) << "root is one";
    }
    EXPECT_TRUE(CloseHandle(token));
    EXPECT_EQ(Groups_Of(token), "error 6");
}

TEST_F(Tokens, AreRefusedToWhatHasNone) {
    HANDLE token = nullptr;
    DWORD needed = 0;
    EXPECT_FALSE(OpenThreadToken(nullptr, TOKEN_QUERY, FALSE, &token));
    EXPECT_EQ(Last_Error(), "6");
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, nullptr);
    EXPECT_FALSE(OpenProcessToken(mutex, TOKEN_QUERY, &token));
    EXPECT_EQ(Last_Error(), "6");
    EXPECT_EQ(Groups_Of(mutex), "error 6");
    EXPECT_TRUE(CloseHandle(mutex));

    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, GetCurrentProcessId());
    ASSERT_TRUE(OpenProcessToken(process, 0, &token));
    EXPECT_EQ(Groups_Of(token), "error 5") << "not opened for that";
    EXPECT_FALSE(GetTokenInformation(token, static_cast<TOKEN_INFORMATION_CLASS>(1), nullptr, 0, &needed));
    EXPECT_EQ(Last_Error(), "87");
    EXPECT_EQ(WaitForSingleObject(token, 0), WAIT_FAILED);
    CloseHandle(token);
    machine.Set("windows", "me");
    EXPECT_FALSE(OpenProcessToken(process, TOKEN_QUERY, &token));
    EXPECT_EQ(Last_Error(), std::to_string(ERROR_CALL_NOT_IMPLEMENTED));
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
    BYTE broken[12] = {2, 1};
    EXPECT_FALSE(IsValidSid(broken) || IsValidSid(nullptr));
    PSID none = nullptr;
    EXPECT_FALSE(AllocateAndInitializeSid(&SECURITY_NT_AUTHORITY, 9, 1, 2, 3, 4, 5, 6, 7, 8, &none));
    EXPECT_EQ(Last_Error(), std::to_string(ERROR_INVALID_SID));
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
             Row{"xp", nullptr, 2, 5, 1, 2600},
             Row{"nonsense", nullptr, 2, 5, 1, 2600},
             Row{"xp", "6.0.6000", 2, 6, 0, 6000},
             Row{"95", "4.0.1111", 1, 4, 0, 0x04000457},
             Row{"2000", "5.2", 2, 5, 2, 2195},
             Row{"2000", "-1.5", 2, 5, 0, 2195},
             Row{"xp", "five", 2, 5, 1, 2600},
             Row{"xp", "9", 2, 5, 1, 2600},
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
    for (const DWORD size : {0u, 147u, 149u, 156u}) {
        information.dwOSVersionInfoSize = size;
        EXPECT_FALSE(GetVersionExA(&information));
        EXPECT_EQ(Last_Error(), "122");
    }
    EXPECT_EQ(information.dwMajorVersion, 0u);
    EXPECT_FALSE(GetVersionExA(nullptr));
}

} // namespace
