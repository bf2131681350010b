// SPDX-License-Identifier: MIT
// Data URIs, percent-encoding, and names that stay in their folder.
#include "BufferUri.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

namespace skindesk::gltf {

namespace {

constexpr std::string_view BASE64_DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t NO_DIGIT = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeBase64Values()
{
    std::array<std::uint8_t, 256> values{};
    values.fill(NO_DIGIT);
    for (std::size_t i = 0; i < BASE64_DIGITS.size(); ++i) {
        values[static_cast<unsigned char>(BASE64_DIGITS[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> BASE64_VALUES = MakeBase64Values();

int HexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool HasScheme(std::string_view uri)
{
    const std::size_t colon = uri.find(':');
    const std::size_t slash = uri.find('/');
    return colon != std::string_view::npos && colon > 0 && colon < slash &&
           std::isalpha(static_cast<unsigned char>(uri[0])) != 0 &&
           std::all_of(uri.begin(), uri.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
               return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '-' || c == '.';
           });
}

} // namespace

bool IsDataUri(std::string_view uri)
{
    constexpr std::string_view SCHEME = "data:";
    return uri.size() >= SCHEME.size() && std::equal(SCHEME.begin(), SCHEME.end(), uri.begin(), [](char a, char b) {
               return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
           });
}

std::optional<std::string_view> Base64Of(std::string_view dataUri)
{
    const std::size_t comma = dataUri.find(',');
    if (comma == std::string_view::npos || !dataUri.substr(0, comma).ends_with(";base64")) {
        return std::nullopt;
    }
    return dataUri.substr(comma + 1);
}

std::string MimeTypeOf(std::string_view dataUri)
{
    const std::string_view head = dataUri.substr(5, dataUri.find(',') - 5);
    return std::string(head.substr(0, head.find(';')));
}

std::optional<ByteBlock> DecodeBase64(std::string_view text)
{
    for (int i = 0; i < 2 && text.ends_with('='); ++i) {
        text.remove_suffix(1);
    }
    if (text.size() % 4 == 1) {
        return std::nullopt;
    }
    ByteBlock block(text.size() / 4 * 3 + (text.size() % 4 == 0 ? 0 : text.size() % 4 - 1));
    std::uint8_t* out = block.Data();
    std::uint32_t bits = 0;
    std::uint8_t bad = 0;
    const auto digit = [&text, &bad](std::size_t i) {
        const std::uint8_t value = BASE64_VALUES[static_cast<unsigned char>(text[i])];
        bad |= static_cast<std::uint8_t>(value & 0x80u);
        return static_cast<std::uint32_t>(value);
    };
    std::size_t i = 0;
    for (; i + 4 <= text.size(); i += 4) {
        bits = digit(i) << 18 | digit(i + 1) << 12 | digit(i + 2) << 6 | digit(i + 3);
        *out++ = static_cast<std::uint8_t>(bits >> 16);
        *out++ = static_cast<std::uint8_t>(bits >> 8);
        *out++ = static_cast<std::uint8_t>(bits);
    }
    if (i + 2 <= text.size()) {
        bits = digit(i) << 18 | digit(i + 1) << 12 | (i + 3 <= text.size() ? digit(i + 2) << 6 : 0);
        *out++ = static_cast<std::uint8_t>(bits >> 16);
        if (i + 3 <= text.size()) {
            *out++ = static_cast<std::uint8_t>(bits >> 8);
        }
    }
    if (bad != 0) {
        return std::nullopt;
    }
    return block;
}

std::string EncodeBase64(ByteSpan bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t n = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t bits = static_cast<std::uint32_t>(bytes[i]) << 16;
        bits |= n > 1 ? static_cast<std::uint32_t>(bytes[i + 1]) << 8 : 0;
        bits |= n > 2 ? bytes[i + 2] : 0u;
        text += BASE64_DIGITS[bits >> 18];
        text += BASE64_DIGITS[bits >> 12 & 63];
        text += n > 1 ? BASE64_DIGITS[bits >> 6 & 63] : '=';
        text += n > 2 ? BASE64_DIGITS[bits & 63] : '=';
    }
    return text;
}

std::optional<std::string> PercentDecoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::string PercentEncoded(std::string_view text)
{
    std::string encoded;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (std::isalnum(code) != 0 || std::string_view("-._~!$&'()*+,;=@/").find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded += '%';
            encoded += "0123456789ABCDEF"[code >> 4];
            encoded += "0123456789ABCDEF"[code & 15];
        }
    }
    return encoded;
}

std::string WhatIsWrongWithName(std::string_view uri, std::string& decoded)
{
    if (HasScheme(uri)) {
        return "begins with the scheme \"" + std::string(uri.substr(0, std::min<std::size_t>(uri.find(':'), 40))) +
               "\", only files in the same folder are read";
    }
    const std::optional<std::string> name = PercentDecoded(uri);
    if (!name) {
        return "has a percent sign without two hexadecimal digits";
    }
    if (name->empty()) {
        return "is empty";
    }
    if (name->find('\0') != std::string::npos) {
        return "has a zero byte in it";
    }
    if (name->front() == '/') {
        return "is an absolute path, only files in the same folder are read";
    }
    for (const auto& part : std::filesystem::path(*name)) {
        if (part == "..") {
            return "leads out of the folder of the file";
        }
    }
    decoded = *name;
    return "";
}

bool LiesInFolder(const std::string& folder, const std::string& relativeName)
{
    std::error_code error;
    const std::filesystem::path base = std::filesystem::weakly_canonical(folder.empty() ? "." : folder, error);
    if (error) {
        return false;
    }
    const std::filesystem::path file = std::filesystem::weakly_canonical(base / relativeName, error);
    if (error) {
        return false;
    }
    return std::mismatch(base.begin(), base.end(), file.begin(), file.end()).first == base.end();
}

} // namespace skindesk::gltf
