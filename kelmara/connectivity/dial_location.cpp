#include <kelmara/connectivity/dial_location.h>

#include <kelmara/connectivity/number_fields.h>
#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/system/reg_master.h>

#include <cstring>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // plain fields behind one table pointer
struct DialLocHelperLayout {
    static_assert(offsetof(CDialLocHelper, m_Location_Values) == 4);
    static_assert(offsetof(CDialLocHelper, m_Selected_Location) == 8);
    static_assert(offsetof(CDialLocHelper, m_Undo_State) == 264);
};
#pragma GCC diagnostic pop

namespace {

constexpr char Country_List[] = "SOFTWARE\\Dunmerit Software\\KelMara\\Country List\\";
constexpr std::size_t Path_Size = 256;
constexpr std::size_t Longest_Country = Path_Size - sizeof Country_List;
static_assert(Longest_Country == 207);
constexpr long North_American_Code = 1;

class Options : public OwnedInterface<ITDDOptionsInterface> {
  public:
    explicit Options(IUnknown *location) : result(Query(location, IID_ITDDOptionsInterface)) {}
    const long result;
};

bool Compose_Country_Key(const char *country, char *path) {
    const std::size_t length = std::strlen(country);
    if (length > Longest_Country) return false;
    std::memcpy(path, Country_List, sizeof Country_List - 1);
    std::memcpy(path + sizeof Country_List - 1, country, length + 1);
    return true;
}

bool Has_Country_Code(const char *key, long wanted) try {
    CRegMaster registry;
    long code = 0;
    return registry.OpenKey(HKEY_LOCAL_MACHINE, key) && registry.GetRegEntry("CountryCode", &code) &&
           code == wanted;
} catch (...) { // no memory for a registry object
    return false;
}

} // namespace

CDialLocHelper::CDialLocHelper() : m_Location_Values(nullptr), m_Selected_Location(), m_Undo_State(0) {}

CDialLocHelper::CDialLocHelper(const CDialLocHelper &other) = default;
CDialLocHelper &CDialLocHelper::operator=(const CDialLocHelper &other) = default;

CDialLocHelper::~CDialLocHelper() {
    Close();
}

long CDialLocHelper::Select_Dial_Location(const char *name, bool reopen) {
    if (name && !reopen && std::strcmp(name, m_Selected_Location) == 0) return 0;
    Close();
    return name ? Open(name) : E_INVALIDARG;
}

long CDialLocHelper::Open(const char *name) {
    ComponentLocator locator = {};
    const std::size_t length = std::strlen(name);
    if (length >= sizeof locator.name) return E_INVALIDARG;
    std::memcpy(locator.name, name, length);
    locator.kind = Component_Location;

    OwnedInterface<IComponentStorageInterface> storage;
    if (const long result = storage.Create(CLSID_LocationComponent, IID_IComponentStorageInterface))
        return result;
    if (const long result = storage->Open_Component(&locator, 0)) return result;
    OwnedInterface<IComponentValuesInterface> values;
    if (const long result = values.Query(storage.Get(), IID_IComponentValuesInterface)) return result;
    m_Location_Values = values.Hand_Over();
    std::memcpy(m_Selected_Location, name, length + 1);
    return 0;
}

void CDialLocHelper::Close() {
    if (!m_Location_Values) return;
    if (m_Undo_State) Discard_Undo_State(Options(m_Location_Values).Get());
    m_Location_Values->Release();
    m_Location_Values = nullptr;
    *m_Selected_Location = 0;
}

void CDialLocHelper::Discard_Undo_State(ITDDOptionsInterface *options) {
    if (options && m_Undo_State) options->Discard_Saved_Options(m_Undo_State);
    m_Undo_State = 0;
}

long CDialLocHelper::Get_Selected_Areacode(char *out, int size) {
    if (!m_Location_Values) return E_UNEXPECTED;
    return m_Location_Values->Get_Value(Option_Area_Code.code, out, size);
}

bool CDialLocHelper::TDD_Available_For_Selected_Country() {
    if (!m_Location_Values) return false;
    char country[256] = {};
    m_Location_Values->Get_Value(Option_Country.code, country, Option_Country.size);
    country[sizeof country - 1] = 0;
    char key[Path_Size];
    return Compose_Country_Key(country, key) && Has_Country_Code(key, North_American_Code);
}

long CDialLocHelper::Get_Number_Information(IComplexComponentInterface *component, char *area_code,
                                            char *exchange, char *component_text) {
    if (area_code) *area_code = 0;
    if (exchange) *exchange = 0;
    if (!component || !component_text) return E_INVALIDARG;
    component->Get_Component_Text(component_text);
    if (!*component_text || (!area_code && !exchange)) return 0;

    NumberFields fields;
    if (const long result = fields.Read(component)) return result;
    if (area_code) {
        if (const long result = fields.Get_Area_Code(area_code)) return result;
    }
    return exchange ? fields.Get_Exchange(exchange) : 0;
}

long CDialLocHelper::Save_TDD_Undo_State() {
    if (!m_Location_Values) return E_UNEXPECTED;
    const Options options(m_Location_Values);
    if (options.result != 0) return options.result;
    Discard_Undo_State(options.Get());
    unsigned long token = 0;
    const long result = options->Save_Options(&token);
    if (result == 0) m_Undo_State = token;
    return result;
}

long CDialLocHelper::Set_TDD_Options(bool first, bool second, const char *area_code, const char *exchange) {
    if (!m_Location_Values) return E_UNEXPECTED;
    const Options options(m_Location_Values);
    if (options.result != 0) return options.result;
    // The component takes the two answers the other way round.
    return options->Apply_Options(second, first, const_cast<char *>(area_code), const_cast<char *>(exchange));
}

long CDialLocHelper::Undo_TDD_Options_Change() {
    if (!m_Location_Values || !m_Undo_State) return E_UNEXPECTED;
    const Options options(m_Location_Values);
    return options.result != 0 ? options.result : options->Restore_Options(m_Undo_State);
}
