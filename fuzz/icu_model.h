// ICU's conversion of a whole text at once, into as much room as it may take.
#ifndef DOV0610_FUZZ_ICU_MODEL_H
#define DOV0610_FUZZ_ICU_MODEL_H

#include "fuzz_target.h"

#include <string>
#include <unicode/ucnv.h>

class IcuConverter {
public:
    explicit IcuConverter(const char *name) : converter(ucnv_open(name, &status)) {}
    ~IcuConverter() { ucnv_close(converter); }
    IcuConverter(const IcuConverter &) = delete;
    IcuConverter &operator=(const IcuConverter &) = delete;

    bool isOpen() const { return U_SUCCESS(status) != 0; }

    std::u16string toUnicode(const std::string &data) const
    {
        std::u16string units(4 * data.size() + 16, u'\0');
        UErrorCode error = U_ZERO_ERROR;
        const int32_t count = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()),
                                            data.data(), static_cast<int32_t>(data.size()), &error);
        MUST(U_SUCCESS(error));
        return units.substr(0, static_cast<size_t>(count));
    }

    std::string fromUnicode(const std::u16string &units) const
    {
        std::string data(8 * units.size() + 64, '\0');
        UErrorCode error = U_ZERO_ERROR;
        const int32_t count = ucnv_fromUChars(converter, data.data(), static_cast<int32_t>(data.size()),
                                              units.data(), static_cast<int32_t>(units.size()), &error);
        MUST(U_SUCCESS(error));
        return data.substr(0, static_cast<size_t>(count));
    }

private:
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter;
};

#endif
