// The 64 characters of Base64 in the order of their values, and the character that pads the last group.
#ifndef DOV0610_TEXT_BASE64_ALPHABET_H
#define DOV0610_TEXT_BASE64_ALPHABET_H

inline constexpr char Base64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr char Base64Padding = '=';

#endif
