// Knows the agent's defaults that need no more than the table.
#include "prodspec/product_spec_defaults.h"

#include "prodspec/product_spec_table.h"

#include <cstdio>
#include <cstring>

namespace {

struct FileNameDefault {
    int32_t index;
    const char *baseName;
};

constexpr FileNameDefault FileNameDefaults[] = {
    {DOV0_PSF_INITCNFG_FILE_NAME, OA_INITCNFG_File}, {DOV0_PSF_DOVATBLS_FILE_NAME, OA_DOVATBLS_File},
    {DOV0_PSF_DOVPURLS_FILE_NAME, OA_DOVPURLS_File}, {DOV0_PSF_SNMPCOMM_FILE_NAME, OA_SNMPCOMM_File},
    {DOV0_PSF_SNMPLIST_FILE_NAME, OA_SNMPLIST_File}, {DOV0_PSF_SNMPNAME_FILE_NAME, OA_SNMPNAME_File},
    {DOV0_PSF_SNMPNETS_FILE_NAME, OA_SNMPNETS_File}, {DOV0_PSF_SNMPROUT_FILE_NAME, OA_SNMPROUT_File},
    {DOV0_PSF_SNMPMIBI_FILE_NAME, OA_SNMPMIBI_File}, {DOV0_PSF_TRAPCNFG_FILE_NAME, OA_TRAPCNFG_File},
};

bool defaultToFileName(int32_t index, const char *baseName) noexcept
{
    const char *instanceName = productSpecValue(DOV0_PSF_INSTANCE_NAME);
    if (!isUnset(index)) {
        return true;
    }
    if (instanceName == nullptr || instanceName[0] == '\0') {
        return copyProductSpecValue(index, baseName);
    }
    const size_t length = std::strlen(baseName) + 1 + std::strlen(instanceName);
    char *fileName = getTextStorage(length);
    if (fileName == nullptr) {
        return false;
    }
    std::snprintf(fileName, length + 1, "%s_%s", baseName, instanceName);
    setProductSpecValue(index, fileName);
    return true;
}

} // namespace

bool isAgent() noexcept
{
    return std::strcmp(productSpecValue(DOV0_PSF_PRODUCT_CODE), OA_ProductCode) == 0;
}

bool hasRequiredValues() noexcept
{
    static constexpr int32_t Required[] = {
        DOV0_PSF_NODE_TYPE,        DOV0_PSF_PRODUCT_NAME,       DOV0_PSF_AGENT_AFF_NAME,
        DOV0_PSF_SUBNODE_AFF_NAME, DOV0_PSF_DP_TO_START,        DOV0_PSF_DCH_PORT_NUMBER,
        DOV0_PSF_DP_PORT_OFFSET,   DOV0_PSF_INITCNFG_FILE_NAME, DOV0_PSF_DOVATBLS_FILE_NAME,
    };
    for (const int32_t index : Required) {
        if (isUnset(index)) {
            return false;
        }
    }
    return true;
}

bool defaultTo(int32_t index, const char *text) noexcept
{
    return !isUnset(index) || copyProductSpecValue(index, text);
}

void defaultToYes(int32_t index) noexcept
{
    if (isUnset(index)) {
        setProductSpecValue(index, ProductSpecSelected);
    }
}

bool defaultFileNames() noexcept
{
    for (const FileNameDefault &fileName : FileNameDefaults) {
        if (!defaultToFileName(fileName.index, fileName.baseName)) {
            return false;
        }
    }
    return true;
}
