// What a product specification holds where its file says nothing, and what must not be left open.
#ifndef DOV0610_PRODSPEC_PRODUCT_SPEC_DEFAULTS_H
#define DOV0610_PRODSPEC_PRODUCT_SPEC_DEFAULTS_H

#include <cstdint>

// The agent's own product code and the values of its specification that are not set otherwise.
constexpr char OA_ProductCode[] = "OV";
constexpr char OA_NodeType[] = "OA";
constexpr char OA_ProductName[] = "Omnia Agent";
constexpr char OA_DCH_PortNumber[] = "1919";
constexpr char OA_DP_PortOffset[] = "0";
constexpr char OA_INITCNFG_File[] = "DOVPCNFG";
constexpr char OA_TRAPCNFG_File[] = "TRAPCNFG";
constexpr char OA_SNMPCOMM_File[] = "DOVSCOMM";
constexpr char OA_SNMPLIST_File[] = "DOVSLIST";
constexpr char OA_SNMPNAME_File[] = "DOVSNAME";
constexpr char OA_SNMPNETS_File[] = "DOVSNETS";
constexpr char OA_SNMPROUT_File[] = "DOVSROUT";
constexpr char OA_SNMPMIBI_File[] = "DOVSMIBI";
constexpr char OA_DOVATBLS_File[] = "DOVATBLS";
constexpr char OA_DOVPURLS_File[] = "DOVPURLS";

// Whether the product is the agent itself, rather than a packaged solution. Its code must be set.
bool isAgent() noexcept;

// Whether everything is set that a packaged solution must say.
bool hasRequiredValues() noexcept;

// Set an unset keyword to a copy of a text, which an update may later replace and free, or to yes. False when there
// is no storage.
bool defaultTo(int32_t index, const char *text) noexcept;
void defaultToYes(int32_t index) noexcept;

// Sets the names of the agent's configuration files that are unset: base names, followed by the name of the instance
// when there is one. False when there is no storage.
bool defaultFileNames() noexcept;

#endif
