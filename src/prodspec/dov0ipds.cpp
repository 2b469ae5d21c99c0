// Builds the product specification of the process, once: from its product specification file, or for a common
// data provider from the agent's defaults alone.
#include "foundation/frame.h"
#include "foundation/is_numeric.h"
#include "prodspec/affinity_table.h"
#include "prodspec/product_spec_defaults.h"
#include "prodspec/product_spec_record.h"
#include "prodspec/product_spec_table.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unicode/uloc.h>

namespace {

// The file while it is read, and its name for the messages.
struct ProductSpecFile {
    FILE *stream = nullptr;
    char name[DOV0_PATH_NAME_SIZE] = "";
};

constexpr size_t AgentVersionLength = 6;

bool isSet(const char *text) noexcept
{
    return text != nullptr && text[0] != '\0';
}

bool openFile(const Frame &frame, const char *path, const char *name, ProductSpecFile &file) noexcept
{
    char errorText[128];
    char *pathName = DOV0_ConstructFullyQualifiedName(path, name != nullptr ? name : DOV_PSF_FileName);
    if (pathName == nullptr) { // for want of storage
        TRACE(frame, Trace::Configuration,
              "*****ERROR: Product Specification File open failed, ErrorText <%s>\n",
              strerror_r(ENOMEM, errorText, sizeof errorText));
        return false;
    }
    std::memcpy(file.name, pathName, sizeof file.name);
    DOV0_FreeStorage(&pathName);
    file.stream = std::fopen(file.name, "re");
    const int error = errno;
    if (file.stream == nullptr) {
        TRACE(frame, Trace::Configuration,
              "*****ERROR: Product Specification File %s open failed, ErrorText <%s>\n", file.name,
              strerror_r(error, errorText, sizeof errorText));
        return false;
    }
    return true;
}

bool checkFileID(const Frame &frame, const ProductSpecFile &file) noexcept
{
    ProductSpecRecord line;
    readLinePiece(file.stream, line); // empty when there is none
    if (std::strncmp(line, DOV_PSF_FileID, sizeof DOV_PSF_FileID - 1) != 0) {
        TRACE(frame, Trace::Configuration, "*****ERROR: Invalid product specification file ID <%s>\n", line);
        return false;
    }
    TRACE(frame, Trace::Configuration, "-----Product Specification File being used is %s-----\n", file.name);
    return true;
}

// Takes one deciphered record into the table. Returns false only when there is no storage for its value.
bool takeRecord(const Frame &frame, char *record, const char *fileName) noexcept
{
    DOV0_RemoveCRandLF(record, DOV0_REMOVE_BOTH);
    char *keyword = skipBlanks(record);
    if (*keyword == '\0') {
        return true;
    }
    char *equalSign = std::strchr(keyword, '=');
    if (equalSign == nullptr) {
        TRACE(frame, Trace::Configuration, "*****Product Specification syntax error. Ignored\n");
        return true;
    }
    *equalSign = '\0';
    DOV0_ConvertStringToUpper(keyword, 0); // null for an empty keyword, hence the text itself below
    const int32_t index = findKeyword(keyword);
    if (index == NoKeyword) {
        TRACE(frame, Trace::Configuration, "*****Unrecognized product specification keyword %s. Ignored\n",
              keyword);
        return true;
    }
    const char *value = skipBlanks(equalSign + 1);
    if (*value == '\0') { // what an earlier record set stands
        return true;
    }
    if (index == DOV0_PSF_AGENT_VERSION &&
        (std::strlen(value) != AgentVersionLength || isNumeric(value) == 0)) {
        TRACE(
            frame, Trace::Configuration,
            "*****ERROR: PSF file %s specifies invalid AGENT_VERSION=%s; value must be 6 digits - padded w/ "
            "leading/trailing zeroes , as needed\n",
            fileName, value);
        return true;
    }
    if (meansNo(value)) {
        setProductSpecValue(index, ProductSpecNotSelected);
        return true;
    }
    return copyProductSpecValue(index, value);
}

// Returns false when there is no storage for a value.
bool readRecords(const Frame &frame, const ProductSpecFile &file) noexcept
{
    ProductSpecRecord record;
    // Every record has a number, also one that is ignored.
    for (uint32_t number = 1; readRecord(file.stream, number, record); ++number) {
        TRACE_WITH_ZERO_FLAG(frame, Trace::Configuration, "Rec %02.2d %s", static_cast<int32_t>(number),
                             record);
        if (!takeRecord(frame, record, file.name)) {
            return false;
        }
    }
    return true;
}

// Fills in what the agent's own specification leaves unset. False when there is no storage for a value.
bool fillAgentDefaults(const Frame &frame, const char *instanceName, const char *uLocale) noexcept
{
    if (!defaultTo(DOV0_PSF_NODE_TYPE, OA_NodeType) || !defaultTo(DOV0_PSF_PRODUCT_NAME, OA_ProductName) ||
        !defaultTo(DOV0_PSF_AGENT_AFF_NAME, OA_AgentAffinityName) ||
        !defaultTo(DOV0_PSF_SUBNODE_AFF_NAME, OA_SubnodeAffinityName)) {
        return false;
    }
    if (isUnset(DOV0_PSF_SUBNODE_AFF_FEAT)) {
        if (!copyProductSpecValue(DOV0_PSF_SUBNODE_AFF_FEAT, OA_SubnodeAffinityFeatures)) {
            return false;
        }
        TRACE(frame, Trace::Detail, "Setting DOV2_SUBNODE_AFF_FEAT to <%s>\n",
              productSpecValue(DOV0_PSF_SUBNODE_AFF_FEAT));
    }
    if (!defaultTo(DOV0_PSF_DCH_PORT_NUMBER, OA_DCH_PortNumber) ||
        !defaultTo(DOV0_PSF_DP_PORT_OFFSET, OA_DP_PortOffset)) {
        return false;
    }
    for (int32_t index = DOV0_PSF_REGISTER_OAGENT; index <= DOV0_PSF_ENABLE_METAFILE_COMMANDS; ++index) {
        defaultToYes(index);
    }
    if (isUnset(DOV0_PSF_ENABLE_CONSOLE_COMMANDS)) {
        setProductSpecValue(DOV0_PSF_ENABLE_CONSOLE_COMMANDS, ProductSpecSelected);
        TRACE(frame, Trace::Detail, "Setting DOV2_ENABLE_CONSOLE_COMMANDS to <%s>\n", ProductSpecSelected);
    }
    if (isUnset(DOV0_PSF_ENABLE_AUTOMATION_SERVER)) {
        setProductSpecValue(DOV0_PSF_ENABLE_AUTOMATION_SERVER, ProductSpecSelected);
        TRACE(frame, Trace::Detail, "Setting DOV2_ENABLE_AUTOMATION_SERVER to <%s>\n", ProductSpecSelected);
    }
    defaultToYes(DOV0_PSF_MANAGED_NETWORK_MS);
    if (isSet(instanceName)) { // over what the file says
        if (!copyProductSpecValue(DOV0_PSF_INSTANCE_NAME, instanceName)) {
            return false;
        }
        TRACE(frame, Trace::Detail, "Setting DOV2_INSTANCE_NAME to <%s>\n",
              productSpecValue(DOV0_PSF_INSTANCE_NAME));
    }
    if (!defaultFileNames()) {
        return false;
    }
    if (isUnset(DOV0_PSF_AGENT_LOCALE) && isSet(uLocale)) {
        if (!copyProductSpecValue(DOV0_PSF_AGENT_LOCALE, uLocale)) {
            return false;
        }
        TRACE(frame, Trace::Detail, "Setting DOV2_AGENT_LOCALE to <%s>\n",
              productSpecValue(DOV0_PSF_AGENT_LOCALE));
    }
    defaultToYes(DOV0_PSF_ENABLE_GLOBALIZATION);
    return true;
}

// Turns the codes of DP_TO_START into type numbers, "SNMP,FILE" into "7,2". False without storage.
bool translateDPtoStart(const Frame &frame) noexcept
{
    constexpr size_t IndexSize = 80;
    if (isUnset(DOV0_PSF_DP_TO_START)) {
        return true;
    }
    char sharedCopy[] = "N"; // the shared constant itself must not be split
    char *codes = ownedProductSpecValue(DOV0_PSF_DP_TO_START);
    if (codes == nullptr) {
        codes = sharedCopy;
    }
    DOV0_ConvertStringToUpper(codes, 0);
    auto *pDPindex = static_cast<char *>(DOV0_GetStorage(IndexSize));
    if (pDPindex == nullptr) {
        return false;
    }
    size_t used = 0;
    for (const char *code = DOV0_strtok(codes, ","); code != nullptr; code = DOV0_strtok(nullptr, ",")) {
        const int32_t type = findDPtype(code);
        if (type < 0 || used + 2 >= IndexSize) { // what no longer fits is as good as unknown
            TRACE(frame, Trace::Error, "*****Error: Invalid DP [%s], ignored\n", code);
            continue;
        }
        if (type == DPtypeNone) {
            TRACE(frame, Trace::Error, "NODP was specified in DP_TO_START\n");
        }
        pDPindex[used++] = static_cast<char>('0' + type);
        pDPindex[used++] = ',';
        if (type != DPtypeNone) {
            TRACE(frame, Trace::Detail, "Copied %d to pDPindex @%p <%s>\n", type,
                  static_cast<const void *>(pDPindex), pDPindex);
        }
    }
    setProductSpecValue(DOV0_PSF_DP_TO_START, nullptr);
    if (used == 0) {
        DOV0_FreeStorage(&pDPindex);
        return true;
    }
    --used;
    TRACE(frame, Trace::Detail, "Clearing one byte from pDPindex @%p <%s> + %d\n",
          static_cast<const void *>(pDPindex), pDPindex, static_cast<int32_t>(used));
    pDPindex[used] = '\0';
    setProductSpecValue(DOV0_PSF_DP_TO_START, pDPindex);
    TRACE(frame, Trace::Detail, "ProductSpecValueArray <%s>\n", productSpecValue(DOV0_PSF_DP_TO_START));
    return true;
}

bool checkAffinityFeatures(const Frame &frame) noexcept
{
    const size_t length = std::strlen(productSpecValue(DOV0_PSF_SUBNODE_AFF_FEAT));
    if (length != AffinityFeatureLength) {
        TRACE(frame, Trace::Configuration,
              "*****Error: Affinity feature specification length %d error. Must be AFF_FEATURE_BYTES\n",
              static_cast<int32_t>(length));
        return false;
    }
    return true;
}

// Finds the agent's affinity string. False only when there is no storage for it; an unknown name leaves it unset.
bool resolveAgentAffinity(const Frame &frame) noexcept
{
    const char *name = productSpecValue(DOV0_PSF_AGENT_AFF_NAME);
    for (int32_t row = 0; isSet(map[row].name); ++row) {
        TRACE(frame, Trace::Detail, "Comparing affinity #%d <%s> against <%s>\n", row, map[row].name, name);
        if (std::strcmp(map[row].name, name) == 0) {
            return copyProductSpecValue(DOV0_PSF_AGENT_AFF_STRING, map[row].string);
        }
    }
    return true;
}

// The same for the subnodes that data providers make.
bool resolveSubnodeAffinity(const Frame &frame) noexcept
{
    const char *name = productSpecValue(DOV0_PSF_SUBNODE_AFF_NAME);
    for (int32_t row = 0; isSet(map[row].name); ++row) {
        TRACE(frame, Trace::Detail, "Comparing subnode affinity #%d <%s> against <%s>\n", row, map[row].name,
              name);
        if (std::strcmp(map[row].name, name) == 0) {
            return copyProductSpecValue(DOV0_PSF_SUBNODE_AFF_STRING, map[row].string);
        }
    }
    return true;
}

bool checkAffinities(const Frame &frame) noexcept
{
    const bool knowsAgent = !isUnset(DOV0_PSF_AGENT_AFF_STRING);
    if (!knowsAgent) {
        TRACE(frame, Trace::Configuration, "*****Error: Agent affinity name invalid <%s>\n",
              productSpecValue(DOV0_PSF_AGENT_AFF_NAME));
    }
    const bool knowsSubnode = !isUnset(DOV0_PSF_SUBNODE_AFF_STRING);
    if (!knowsSubnode) {
        TRACE(frame, Trace::Configuration, "*****Error: Subnode affinity name invalid <%s>\n",
              productSpecValue(DOV0_PSF_SUBNODE_AFF_NAME));
    }
    return knowsAgent && knowsSubnode;
}

// A packaged solution has a file of its own name; the agent's name is taken only when it was not asked for.
bool checkFileName(const Frame &frame, const char *name) noexcept
{
    if (name != nullptr && std::strcmp(name, DOV_PSF_FileName) == 0 && !isAgent()) {
        TRACE(frame, Trace::Configuration,
              "*****Error: Override OA product specification file with packaged solution not allowed\n");
        return false;
    }
    return true;
}

// Resolves the affinities and looks for everything that is wrong, not only for the first.
bool validateTable(const Frame &frame, const char *specName) noexcept
{
    bool valid = checkAffinityFeatures(frame);
    if (!resolveAgentAffinity(frame) || !resolveSubnodeAffinity(frame)) {
        return false;
    }
    valid = checkAffinities(frame) && valid;
    return checkFileName(frame, specName) && valid;
}

const char *reportedName(int32_t index) noexcept
{
    switch (index) {
    case DOV0_PSF_AGENT_AFF_STRING:
        return "AGENT_AFF_STRING";
    case DOV0_PSF_SUBNODE_AFF_STRING:
        return "SUBNODE_AFF_STRING";
    default:
        return ProductSpecNameArray[index];
    }
}

bool isReportedAsYes(int32_t index) noexcept
{
    return index == DOV0_PSF_ENABLE_CONSOLE_COMMANDS || index == DOV0_PSF_ENABLE_GLOBALIZATION ||
           index == DOV0_PSF_ENABLE_AUTOMATION_SERVER;
}

// Reports the table in effect. Three defaults and the unsetting of switches that are off are part of the report on
// purpose: they happen only where it is made.
void reportTable(const Frame &frame, uint32_t bits) noexcept
{
    TRACE(frame, bits, "The following Product Specification Parameters are in effect:\n");
    for (int32_t index = DOV0_PSF_PRODUCT_CODE; index < ProductSpecNameCount; ++index) {
        const char *value = productSpecValue(index);
        if (value == nullptr && isReportedAsYes(index)) {
            setProductSpecValue(index, ProductSpecSelected);
            TRACE(frame, bits, "%s=Not Specified, default to Yes\n", reportedName(index));
        } else if (value == nullptr) {
            TRACE(frame, bits, "%s=Not Specified, default to No\n", reportedName(index));
        } else {
            TRACE(frame, bits, "%s=%s\n", reportedName(index), value);
            if (value == ProductSpecNotSelected && isUnsetWhenOff(index)) {
                setProductSpecValue(index, nullptr);
            }
        }
    }
}

// Fills the table from the file, or without one for a common data provider. False when there is no storage for a value.
bool fillTable(const Frame &frame, const ProductSpecFile &file) noexcept
{
    for (int32_t index = 0; index < ProductSpecValueCount; ++index) {
        setProductSpecValue(index, nullptr); // also what a failed call left
    }
    if (file.stream != nullptr) {
        return readRecords(frame, file);
    }
    if (!copyProductSpecValue(DOV0_PSF_PRODUCT_CODE, OA_ProductCode)) {
        return false;
    }
    TRACE(frame, Trace::Detail, "Initialized PRODUCT_CODE=%s for Common Data Provider\n",
          productSpecValue(DOV0_PSF_PRODUCT_CODE));
    return true;
}

bool checkProduct(const Frame &frame) noexcept
{
    if (isUnset(DOV0_PSF_PRODUCT_CODE)) {
        TRACE(frame, Trace::Configuration, "*****Error: Product Code not specified\n");
        return false;
    }
    char copyOfNo[] = "N"; // a shared constant is not written to
    char *productCode = ownedProductSpecValue(DOV0_PSF_PRODUCT_CODE);
    DOV0_ConvertStringToUpper(productCode != nullptr ? productCode : copyOfNo, 0);
    if (!isAgent() && !hasRequiredValues()) {
        TRACE(frame, Trace::Configuration,
              "*****Required product specifications not defined for non-OA product.\n");
        return false;
    }
    return true;
}

// Puts in what the file did not say. False when there is no storage for a value.
bool completeTable(const Frame &frame, const char *instanceName, const char *uLocale) noexcept
{
    if (isAgent()) {
        if (!fillAgentDefaults(frame, instanceName, uLocale)) {
            return false;
        }
    } else {
        setProductSpecValue(DOV0_PSF_PACKAGED_SOLUTION, ProductSpecSelected);
    }
    return translateDPtoStart(frame) && defaultTo(DOV0_PSF_SUBNODE_AFF_FEAT, NoAffinityFeatures);
}

} // namespace

TRACE_CONTROL("dov0ipds", DOV0_InitializeProductSpec);
extern "C" int32_t DOV0_InitializeProductSpec(const char *instanceName, int32_t commonDataProvider) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (ProductSpecInitialized.load(std::memory_order_acquire) != 0) {
        TRACE(frame, Trace::Detail, "Product specification already initialized\n");
        return frame.leave<int32_t>(1);
    }
    const char *path = DOV0_GetEnv("DOV_PRODSPEC_PATH", nullptr);
    const char *name = DOV0_GetEnv("DOV_PRODSPEC_NAME", nullptr);
    const char *uLocale = uloc_getDefault();
    TRACE(frame, Trace::Detail, "Assigned uLocale @%p\n", static_cast<const void *>(uLocale));
    if (isSet(instanceName)) {
        TRACE(frame, Trace::Configuration,
              "Initializing Product Specification File with instance name <%s>\n", instanceName);
    }
    ProductSpecFile file;
    const bool hasSource =
        commonDataProvider != 0 || (openFile(frame, path, name, file) && checkFileID(frame, file));
    if (hasSource) {
        const bool valid = fillTable(frame, file) && checkProduct(frame) &&
                           completeTable(frame, instanceName, uLocale) && validateTable(frame, name);
        if (valid && frame.traces(Trace::Configuration)) {
            reportTable(frame, commonDataProvider != 0 ? Trace::Detail : Trace::Configuration);
        }
        // Other threads see the table only now that it is complete.
        ProductSpecInitialized.store(valid ? 1 : 0, std::memory_order_release);
        if (valid) {
            TRACE(frame, Trace::Configuration, "Product specification initialization successful\n");
        } else {
            TRACE(frame, Trace::Configuration, "*****Product specification initialization failed\n");
        }
    }
    if (file.stream != nullptr) {
        DOV0_CloseFile(&file.stream);
    }
    return frame.leave<int32_t>(ProductSpecInitialized.load(std::memory_order_relaxed));
}
