// Translates text from one code page to another, through UTF-16.
#include "dov0610_platform.h"
#include "nls/converter_pool.h"

namespace {

constexpr int32_t PivotUnits = 1024;

// Returns the bytes stored. ICU terminates the result where there is room.
int32_t translate(UConverter *target, char *output, int32_t outputCapacity, UConverter *source,
                  const char *input, int32_t inputLength, int32_t &inputConsumed, UErrorCode &error)
{
    char16_t pivot[PivotUnits];
    char16_t *pivotSource = pivot;
    char16_t *pivotTarget = pivot;
    const char *from = input;
    const auto convertUpTo = [&](char *&to, const char *end, UBool reset) {
        error = U_ZERO_ERROR;
        ucnv_convertEx(target, source, &to, end, &from, input + inputLength, pivot, &pivotSource,
                       &pivotTarget, pivot + PivotUnits, reset, true, &error);
    };
    char *to = output;
    convertUpTo(to, output + outputCapacity, true);
    inputConsumed = static_cast<int32_t>(from - input);
    if (error == U_BUFFER_OVERFLOW_ERROR) {
        // What is left may come to nothing: ICU drops invisible characters that the target lacks.
        char oneMore = '\0';
        char *beyond = &oneMore;
        convertUpTo(beyond, &oneMore + 1, false);
        if (U_SUCCESS(error) && beyond == &oneMore) {
            inputConsumed = inputLength;
        } else {
            error = U_BUFFER_OVERFLOW_ERROR;
        }
    }
    return static_cast<int32_t>(to - output);
}

} // namespace

extern "C" int32_t LNG2_TranslateString(int32_t targetCodepage, char *output, int32_t outputCapacity,
                                        int32_t sourceCodepage, const char *input, int32_t inputLength,
                                        int32_t *inputConsumed, int32_t /*reserved*/, int32_t *status)
{
    int32_t length = 0;
    int32_t consumed = 0;
    UErrorCode error = U_ZERO_ERROR;
    if (output == nullptr || outputCapacity < 1 || inputLength < 0 || (input == nullptr && inputLength > 0)) {
        error = U_ILLEGAL_ARGUMENT_ERROR;
    }
    const PooledConverter source(sourceCodepage, error);
    const PooledConverter target(targetCodepage, error);
    if (U_SUCCESS(error)) {
        error = U_ZERO_ERROR;
        length = translate(target.get(), output, outputCapacity, source.get(), input != nullptr ? input : "",
                           inputLength, consumed, error);
        if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) {
            length = 0;
        }
    }
    if (inputConsumed != nullptr) {
        *inputConsumed = consumed;
    }
    if (status != nullptr) {
        *status =
            U_FAILURE(error) ? error : U_ZERO_ERROR; // a result that fills the output is no warning here
    }
    return length;
}
