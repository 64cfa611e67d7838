#pragma once
// The records that cross to the suite's components, and the codes of what is read and written there.
//
// The layouts and the codes are part of the contract between separately built components and do not change.

#include <kelmara/api.h>

// --- records ----------------------------------------------------------------------------------------------

/// Kinds of a ComponentLocator.
inline constexpr long Component_Configuration = 0;
inline constexpr long Component_Phonebook = 1;
inline constexpr long Component_Location = 2;

/// Names a component. Who fills one for Open_Component sets `name` and `kind` alone, in a cleared record.
struct ComponentLocator {
    char unset_0[2];       // offset 0
    char name[130];        // offset 2, terminated
    long kind;             // offset 132, Component_...
    char unread_136[20];   // offset 136
    unsigned long present; // offset 156, from Find_Component: not 0 if there is such a component
    char unread_160[216];  // offset 160
};
static_assert(sizeof(ComponentLocator) == 376 && offsetof(ComponentLocator, name) == 2);
static_assert(offsetof(ComponentLocator, kind) == 132 && offsetof(ComponentLocator, unread_136) == 136);
static_assert(offsetof(ComponentLocator, present) == 156 && offsetof(ComponentLocator, unread_160) == 160);

/// What a connection is made with. The caller allocates it; the library writes nothing at offset 0 and from
/// offset 752 on, which is room for what the connection component keeps there.
struct ConnectParams {
    char unset_0[4];              // offset 0
    char configuration_name[68];  // offset 4, at most 67 characters; empty for a longer name
    char account_id[64];          // offset 72, at most 63 characters
    char password[64];            // offset 136, at most 63 characters
    char first_dial_string[256];  // offset 200
    char second_dial_string[288]; // offset 456, at most 255 characters; empty if there is none
    long number_behind_DURT;      // offset 744
    long number_behind_DUWT;      // offset 748
    char of_the_component[272];   // offset 752
};
static_assert(sizeof(ConnectParams) == 1024 && offsetof(ConnectParams, configuration_name) == 4);
static_assert(offsetof(ConnectParams, account_id) == 72 && offsetof(ConnectParams, password) == 136);
static_assert(offsetof(ConnectParams, first_dial_string) == 200);
static_assert(offsetof(ConnectParams, second_dial_string) == 456);
static_assert(offsetof(ConnectParams, number_behind_DURT) == 744);
static_assert(offsetof(ConnectParams, number_behind_DUWT) == 748);
static_assert(offsetof(ConnectParams, of_the_component) == 752);

// --- options ----------------------------------------------------------------------------------------------

/// Four characters as one number, the first in the highest byte.
consteval unsigned long Component_Code(const char (&text)[5]) {
    unsigned long code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}
static_assert(Component_Code("CMTH") == 0x434D5448 && Component_Code("PAS*") == 0x5041532A);
static_assert(Component_Code("DL1?") == 0x444C313F && Component_Code("arcd") == 0x61726364);

/// An option's code, and the size to give on reading it.
struct ComponentOption {
    unsigned long code;
    long size;
};

// Of a configuration.
inline constexpr ComponentOption Option_Connection_Method = {Component_Code("CMTH"), 255};
inline constexpr ComponentOption Option_Modem_Device = {Component_Code("MODD"), 255};
inline constexpr ComponentOption Option_Account_ID = {Component_Code("USID"), 255};
inline constexpr ComponentOption Option_Password = {Component_Code("PAS*"), 255};
inline constexpr ComponentOption Option_First_Number = {Component_Code("DDUN"), 255};  // canonical
inline constexpr ComponentOption Option_Second_Number = {Component_Code("DDUR"), 255}; // canonical, or empty
inline constexpr ComponentOption Option_Phonebook = {Component_Code("DFPB"), 255};
inline constexpr ComponentOption Option_Phonebook_Flag = {Component_Code("DFP!"), 255}; // "FALSE" or another
inline constexpr ComponentOption Option_Location = {Component_Code("DDLC"), 255};
inline constexpr ComponentOption Option_Mobile_Location = {Component_Code("DMLC"), 64};
inline constexpr ComponentOption Option_Last_Mobile_Number = {Component_Code("DMLD"), 64};
inline constexpr ComponentOption Option_First_Number_DL1 = {Component_Code("DL1?"), 10}; // "TRUE" or another
inline constexpr ComponentOption Option_First_Number_DAC = {Component_Code("DAC?"), 10};
inline constexpr ComponentOption Option_Second_Number_RD1 = {Component_Code("RD1?"), 10};
inline constexpr ComponentOption Option_Second_Number_RAC = {Component_Code("RAC?"), 10};
inline constexpr ComponentOption Option_DURT = {Component_Code("DURT"), 255}; // a decimal number
inline constexpr ComponentOption Option_DUWT = {Component_Code("DUWT"), 255}; // a decimal number

// The same where they go to a smaller place: into ConnectParams, and to Create_Dial_Number.
inline constexpr ComponentOption Option_Account_ID_To_Connect = {Option_Account_ID.code, 63};
inline constexpr ComponentOption Option_Password_To_Connect = {Option_Password.code, 63};
inline constexpr ComponentOption Option_Location_To_Dial = {Option_Location.code, 64};

// Of a dialling location.
inline constexpr ComponentOption Option_Area_Code = {Component_Code("arcd"), 255};
inline constexpr ComponentOption Option_Country = {Component_Code("cnty"), 255}; // its name

// Settings of the suite server.
inline constexpr ComponentOption Setting_Current_Configuration = {Component_Code("scfg"), 255};
inline constexpr ComponentOption Setting_Static_Configuration = {Component_Code("svac"), 255};

// Items of a value tree.
inline constexpr unsigned long Item_Area_Code = Component_Code("area");
inline constexpr unsigned long Item_Phone_Number = Component_Code("phn#");

/// Run_Component_Command: tests a canonical number against the phone book of that name.
inline constexpr long Command_Test_Number = 0x20B4;
