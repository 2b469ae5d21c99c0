// EBCDIC code page 1047 as the C library's iconv knows it: the judge of the library's own tables.
#ifndef DOV0610_TESTS_CODE_PAGE_1047_H
#define DOV0610_TESTS_CODE_PAGE_1047_H

#include <gtest/gtest.h>
#include <iconv.h>

// The EBCDIC byte of a 7-bit ASCII character.
inline unsigned char ebcdicOf(unsigned char ascii)
{
    const iconv_t converter = iconv_open("IBM1047", "ASCII");
    char input = static_cast<char>(ascii);
    char output = 0;
    char *in = &input;
    char *out = &output;
    size_t inLeft = 1;
    size_t outLeft = 1;
    const size_t rc = iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
    EXPECT_EQ(rc, 0U) << static_cast<int>(ascii);
    EXPECT_EQ(outLeft, 0U);
    return static_cast<unsigned char>(output);
}

// The character of an EBCDIC byte as it is in the code page: a Unicode code point below 256.
inline unsigned char characterOf(unsigned char ebcdic)
{
    const iconv_t converter = iconv_open("ISO-8859-1", "IBM1047");
    char input = static_cast<char>(ebcdic);
    char output = 0;
    char *in = &input;
    char *out = &output;
    size_t inLeft = 1;
    size_t outLeft = 1;
    const size_t rc = iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
    EXPECT_EQ(rc, 0U) << static_cast<int>(ebcdic);
    EXPECT_EQ(outLeft, 0U);
    return static_cast<unsigned char>(output);
}

// The ASCII byte that an EBCDIC byte becomes: that of the code page, "?" beyond 7 bits, and the exceptions.
inline unsigned char asciiOf(unsigned char ebcdic)
{
    switch (ebcdic) {
    case 0x07:
        return 0x10;
    case 0x1C:
    case 0x1D:
    case 0x1E:
    case 0x1F:
        return 0x3F;
    case 0x22:
        return 0x1C;
    case 0x30:
    case 0x31:
    case 0x33:
    case 0x3E:
        return 0x00;
    case 0x35:
        return 0x1E;
    case 0xFA:
        return 0x7C;
    default:
        return characterOf(ebcdic) < 0x80 ? characterOf(ebcdic) : '?';
    }
}

#endif
