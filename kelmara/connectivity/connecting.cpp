// How CConnectionUtility connects.

#include <kelmara/connectivity/connection_utility.h>

#include <kelmara/connectivity/component_options.h>
#include <kelmara/connectivity/dial_location.h>
#include <kelmara/connectivity/phone_numbers.h>

#include <cstdio>
#include <cstring>

namespace {

// The location's ten-digit options for one number after the other. The fields of a number that cannot be
// split are those of the one before.
class NumberOptions {
  public:
    NumberOptions(IComponentValuesInterface *configuration, const char *location)
        : m_Configuration(configuration) {
        m_Location.Select_Dial_Location(location, false);
    }

    void Apply(const char *number, ComponentOption one, ComponentOption area_code) {
        Parse_Canonical_Number(number, nullptr, m_Area, m_Exchange, nullptr);
        const bool second = Option_Is(m_Configuration, one, "TRUE");
        const bool first = Option_Is(m_Configuration, area_code, "TRUE");
        m_Location.Set_TDD_Options(first, second, m_Area, m_Exchange);
    }

  private:
    IComponentValuesInterface *const m_Configuration;
    CDialLocHelper m_Location;
    char m_Area[256] = {}, m_Exchange[256] = {};
};

} // namespace

void CConnectionUtility::Initialize_Connect_Params(ConnectParams *params) {
    if (!params || Is_Lan_Config()) return;
    const std::size_t length = std::strlen(m_Configuration_Name);
    const bool fits = length < sizeof params->configuration_name;
    std::memcpy(params->configuration_name, fits ? m_Configuration_Name : "", fits ? length + 1 : 1);
    Read_Option(m_Configuration, Option_Account_ID_To_Connect, params->account_id);
    Read_Option(m_Configuration, Option_Password_To_Connect, params->password);
    if (Modem_Is_DSL())
        std::strcpy(params->first_dial_string, "1.1.1.1");
    else
        Fill_Dial_Strings(*params);
    params->number_behind_DURT = Read_Number_Option(m_Configuration, Option_DURT);
    params->number_behind_DUWT = Read_Number_Option(m_Configuration, Option_DUWT);
}

void CConnectionUtility::Fill_Dial_Strings(ConnectParams &params) {
    char location[256], number[256];
    Read_Option(m_Configuration, Option_Location_To_Dial, location);
    NumberOptions options(m_Configuration, location);

    Read_Option(m_Configuration, Option_Second_Number, number);
    *params.second_dial_string = 0;
    if (*number) {
        options.Apply(number, Option_Second_Number_RD1, Option_Second_Number_RAC);
        Create_Dial_Number(number, location, params.second_dial_string, nullptr);
    }
    Read_Option(m_Configuration, Option_First_Number, number);
    options.Apply(number, Option_First_Number_DL1, Option_First_Number_DAC);
    Create_Dial_Number(number, location, params.first_dial_string, nullptr);
}

long CConnectionUtility::Connect(ConnectParams *params, bool use_second_number, bool flag) {
    if (!params) return E_INVALIDARG;
    if (!use_second_number) *params->second_dial_string = 0;
    constexpr int Longest = sizeof params->first_dial_string - 1;
    std::snprintf(m_Last_Dialled_Number, sizeof m_Last_Dialled_Number, "%.*s", Longest,
                  params->first_dial_string);
    return m_Connection ? m_Connection->Connect(params, flag) : E_UNEXPECTED;
}

void CConnectionUtility::Close() {
    if (m_Connection) m_Connection->Close();
}
