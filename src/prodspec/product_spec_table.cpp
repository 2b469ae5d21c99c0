// Keeps the product specification. The entries are atomic because queries come from any thread while an update
// may replace a value; nothing is locked.
#include "prodspec/product_spec_table.h"

#include <cstring>

const char *const ProductSpecNameArray[ProductSpecNameCount] = {
    " ",
    "PRODUCT_CODE",
    "NODE_TYPE",
    "PRODUCT_NAME",
    "AGENT_AFF_NAME",
    " ",
    "SUBNODE_AFF_NAME",
    " ",
    "SUBNODE_AFF_FEAT",
    "REGISTER_OAGENT",
    "ENABLE_SNMP_TRAP",
    "ENABLE_SNMP_DISCOVERY",
    "ENABLE_SNMP_MIBSTATUS",
    "ENABLE_DISCOVERY_DATA_UPDATE",
    "ENABLE_DPLOG",
    "ENABLE_METAFILE_COMMANDS",
    "MANAGED_NETWORK_MS",
    "DP_TO_START",
    "METAFILES_TO_LOAD",
    "SNMP_HOTLIST_TO_LOAD",
    "SNMP_HOTLIST_TABLENAME",
    "DCH_PORT_NUMBER",
    "DP_PORT_OFFSET",
    "INITCNFG_FILE_NAME",
    "TRAPCNFG_FILE_NAME",
    "SNMPCOMM_FILE_NAME",
    "SNMPLIST_FILE_NAME",
    "SNMPNAME_FILE_NAME",
    "SNMPNETS_FILE_NAME",
    "SNMPROUT_FILE_NAME",
    "SNMPMIBI_FILE_NAME",
    "DOVATBLS_FILE_NAME",
    "DOVPURLS_FILE_NAME",
    "INSTANCE_NAME",
    "ENABLE_CONSOLE_COMMANDS",
    "SUBNODE_APPEND_APIS",
    "SUBNODE_APPEND_ASFS",
    "SUBNODE_APPEND_FILE",
    "SUBNODE_APPEND_HTTP",
    "SUBNODE_APPEND_ODBC",
    "SUBNODE_APPEND_POST",
    "SUBNODE_APPEND_SCRP",
    "SUBNODE_APPEND_SNMP",
    "SUBNODE_APPEND_SOCK",
    "ADD_SNMP_OBJECTINSTANCE",
    "ENABLE_GLOBALIZATION",
    "AGENT_VERSION",
    "AGENT_LOCALE",
    "ENABLE_AUTOMATION_SERVER",
};

const char DPtypeString[DPtypeCount][5] = {"APIS", "ASFS", "FILE", "HTTP", "ODBC",
                                           "POST", "SCRP", "SNMP", "SOCK", "NODP"};

const char ProductSpecSelected[] = "Y";
const char ProductSpecNotSelected[] = "N";

constinit std::atomic<int32_t> ProductSpecInitialized = 0;

namespace {

constinit std::atomic<const char *> ProductSpecValueArray[ProductSpecValueCount] = {};

// What is no shared constant is a block of working storage, which the table may write to.
char *asOwned(const char *value) noexcept
{
    return isSharedConstant(value) ? nullptr : const_cast<char *>(value);
}

// What no block can hold is asked for as -1, so that it is refused like any other invalid size.
constexpr int32_t textBlockSize(size_t length) noexcept
{
    return length < INT32_MAX ? static_cast<int32_t>(length) + 1 : -1;
}
static_assert(textBlockSize(INT32_MAX - 1) == INT32_MAX && textBlockSize(INT32_MAX) == -1);

// Whether a text is another one or begins inside it.
bool isPartOf(const char *whole, const char *text) noexcept
{
    const auto start = reinterpret_cast<uintptr_t>(whole);
    const auto position = reinterpret_cast<uintptr_t>(text);
    return position >= start && position <= start + std::strlen(whole);
}

} // namespace

const char *productSpecValue(int32_t index) noexcept
{
    return ProductSpecValueArray[index].load(std::memory_order_acquire);
}

char *ownedProductSpecValue(int32_t index) noexcept
{
    return asOwned(productSpecValue(index));
}

void setProductSpecValue(int32_t index, const char *value) noexcept
{
    char *replaced = asOwned(ProductSpecValueArray[index].exchange(value, std::memory_order_acq_rel));
    if (replaced != nullptr) {
        DOV0_FreeStorage(&replaced);
    }
}

bool copyProductSpecValue(int32_t index, const char *text) noexcept
{
    const size_t length = std::strlen(text);
    const char *old = ownedProductSpecValue(index);
    if (old != nullptr && !isPartOf(old, text)) {
        setProductSpecValue(index, nullptr);
    }
    char *copy = getTextStorage(length);
    if (copy == nullptr) {
        return false;
    }
    std::memcpy(copy, text, length);
    setProductSpecValue(index, copy);
    return true;
}

char *getTextStorage(size_t length) noexcept
{
    return static_cast<char *>(DOV0_GetStorage(textBlockSize(length)));
}

bool isSharedConstant(const char *value) noexcept
{
    return value == ProductSpecSelected || value == ProductSpecNotSelected;
}

bool isUnsetWhenOff(int32_t index) noexcept
{
    switch (index) {
    case DOV0_PSF_ENABLE_SNMP_TRAP:
    case DOV0_PSF_ENABLE_SNMP_MIBSTATUS:
    case DOV0_PSF_ENABLE_DPLOG:
    case DOV0_PSF_ENABLE_METAFILE_COMMANDS:
    case DOV0_PSF_ADD_SNMP_OBJECTINSTANCE:
    case DOV0_PSF_ENABLE_GLOBALIZATION:
    case DOV0_PSF_ENABLE_AUTOMATION_SERVER:
        return true;
    default:
        return false;
    }
}
