/// \file ZVSettings.h
/// The settings half of the logger and settings library: named 32-bit numbers that people edit. No function
/// throws.
#pragma once

#include "zvlog/Export.h"

#include <cstdint>
#include <string>

/// A text that crosses the library boundary. Every function is out of line.
class ZVLOG_API zvstring {
public:
    zvstring();
    zvstring(const char* text); // NOLINT(google-explicit-constructor): callers pass literals
    zvstring(const zvstring& other);
    ~zvstring();
    zvstring& operator=(const zvstring& other);
    zvstring& operator+=(const char* text);
    const char* c_str() const;

private:
    friend ZVLOG_API zvstring operator+(const zvstring& left, const char* right);

    std::string m_text;
};

ZVLOG_API zvstring operator+(const zvstring& left, const char* right);

/// The feature type of an integer setting.
constexpr uint32_t zv_feature_integer = 3;
/// The scope "this machine".
constexpr uint32_t zv_scope_machine = 1;

/// The settings store. Values are read from the store at every call. Any thread.
class ZVLOG_API ZVSettings {
public:
    /// The stored value of `key`; creates the key with the default (and the description, when given) if it is
    /// missing.
    static uint32_t InitInteger(uint32_t feature_type, const char* key, uint32_t default_value,
                                const char* description);
    /// Writes the stored value, or the default, to `value`. Never creates the key. True when the key was
    /// stored.
    static bool Get(uint32_t scope, uint32_t feature_type, const zvstring& key, uint32_t& value,
                    uint32_t default_value, bool flag, const char* description);
};
