// What CConnectionUtility tells of a configuration and stores in it.

#include <kelmara/connectivity/connection_utility.h>

#include <kelmara/connectivity/component_options.h>
#include <kelmara/connectivity/connection_kind.h>
#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/connectivity/phone_numbers.h>

#include <cstring>

namespace {

constexpr std::size_t Text_Size = 256, Mobile_Size = 64;

void Give(IComponentValuesInterface *values, ComponentOption option, char *out, std::size_t room) {
    if (out) Read_Option(values, option, out, room);
}

struct ActiveConfiguration {
    explicit ActiveConfiguration(IConnectionInterface &connection) {
        connection.Get_Active_Config(name);
        name[sizeof name - 1] = 0;
    }
    char name[Text_Size] = {};
};

ComponentOption Number_Option(bool first) {
    return first ? Option_First_Number : Option_Second_Number;
}

// By the phone book of that name.
bool Test_Number(IComponentValuesInterface *values, char *number) {
    OwnedInterface<IPhonebookInterface> phone_book;
    if (phone_book.Create(CLSID_PhonebookComponent, IID_IPhonebookInterface) != 0) return false;
    char name[Text_Size];
    Read_Option(values, Option_Phonebook, name);
    ComponentLocator locator;
    if (!Fill_Locator(locator, Component_Phonebook, name)) return false;
    OwnedInterface<IComponentStorageInterface> storage;
    if (storage.Query(phone_book.Get(), IID_IComponentStorageInterface) != 0) return false;
    return storage->Run_Component_Command(Command_Test_Number, locator.name, number, 0, 0) == 0;
}

} // namespace

bool CConnectionUtility::Is_Connected(char *out) {
    if (!m_Connection) return false;
    if (!m_Connection->Is_Dialup()) {
        if (out) std::strcpy(out, m_Configuration_Name);
        return true;
    }
    const ActiveConfiguration active(*m_Connection);
    if (out) std::strcpy(out, active.name);
    return std::strcmp(active.name, m_Configuration_Name) == 0;
}

bool CConnectionUtility::Can_Connect() {
    return m_Connection && !*ActiveConfiguration(*m_Connection).name;
}

bool CConnectionUtility::Is_Lan_Config() {
    return m_Connection && !m_Connection->Is_Dialup();
}

bool CConnectionUtility::Modem_Is_DSL() {
    char device[Text_Size];
    Read_Option(m_Configuration, Option_Modem_Device, device);
    return ::Modem_Is_DSL(device, nullptr);
}

long CConnectionUtility::Check_Dialup_Numbers(bool *, char *, bool *, char *, int) {
    return E_NOTIMPL;
}

void CConnectionUtility::Get_Connected_Status_String(char *out) {
    if (m_Connection) m_Connection->Get_Connected_Status_String(out);
}

void CConnectionUtility::Add_Status_Handler(IConnectionHandlerInterface *handler) {
    if (m_Connection) m_Connection->Add_Status_Handler(handler);
}

void CConnectionUtility::Remove_Status_Handler(IConnectionHandlerInterface *handler) {
    if (m_Connection) m_Connection->Remove_Status_Handler(handler);
}

void CConnectionUtility::Get_Account_ID(char *out) {
    Give(m_Configuration, Option_Account_ID, out, Text_Size);
}

void CConnectionUtility::Get_Password(char *out) {
    Give(m_Configuration, Option_Password, out, Text_Size);
}

void CConnectionUtility::Get_Dialup_Numbers(char *first, char *second) {
    Give(m_Configuration, Option_First_Number, first, Text_Size);
    Give(m_Configuration, Option_Second_Number, second, Text_Size);
}

void CConnectionUtility::Get_Phonebook_Info(char *name, bool *flag) {
    Give(m_Configuration, Option_Phonebook, name, Text_Size);
    const bool is_false = Option_Is(m_Configuration, Option_Phonebook_Flag, "FALSE");
    if (flag) *flag = is_false;
}

void CConnectionUtility::Get_Default_Location(char *out) {
    Give(m_Configuration, Option_Location, out, Text_Size);
}

void CConnectionUtility::Get_Default_Mobile_Location(char *out) {
    Give(m_Configuration, Option_Mobile_Location, out, Mobile_Size);
}

void CConnectionUtility::Get_Last_Mobile_Number(char *out) {
    Give(m_Configuration, Option_Last_Mobile_Number, out, Mobile_Size);
}

long CConnectionUtility::Set_Default_Mobile_Location(const char *name) {
    return Store_Option(Option_Mobile_Location, name);
}

long CConnectionUtility::Set_Last_Mobile_Number(const char *number) {
    return Store_Option(Option_Last_Mobile_Number, number);
}

long CConnectionUtility::Store_Option(ComponentOption option, const char *text) {
    if (!m_Configuration) return E_UNEXPECTED;
    if (!text) text = "";
    OwnedInterface<IComponentStorageInterface> storage;
    if (const long result = storage.Query(m_Configuration, IID_IComponentStorageInterface)) return result;
    if (const long result = storage->Set_Edit_Lock(1, 0)) return result;
    m_Configuration->Set_Value(option.code, const_cast<char *>(text),
                               static_cast<long>(std::strlen(text)) + 1);
    const long result = storage->Commit_Component();
    storage->Set_Edit_Lock(0, 0);
    return result;
}

void CConnectionUtility::Get_Formated_Dialed_Number(bool first_number, char *out) {
    if (!m_Configuration) return;
    char number[Text_Size], location[Text_Size];
    Read_Option(m_Configuration, Number_Option(first_number), number);
    Read_Option(m_Configuration, Option_Location_To_Dial, location);
    Create_Dial_Number(number, location, nullptr, out);
}

bool CConnectionUtility::Verify_Phone_Number(bool first_number) {
    if (Modem_Is_DSL()) return true;
    char number[Text_Size];
    Read_Option(m_Configuration, Number_Option(first_number), number);
    if (!first_number && !*number) return true;
    return Test_Number(m_Configuration, number);
}

bool CConnectionUtility::Verify_Location() {
    if (Modem_Is_DSL()) return true;
    OwnedInterface<IServerInterface> server;
    const long created = server.Take([](void **out) {
        return CoCreateInstance(CLSID_SuiteServer, nullptr, CLSCTX_LOCAL_SERVER, IID_IServerInterface, out);
    });
    if (created != 0) return false;
    char location[Text_Size];
    Read_Option(m_Configuration, Option_Location, location);
    ComponentLocator locator = {};
    return server->Find_Component(Component_Location, location, &locator) == 0 && locator.present != 0;
}
