#include "RDTools/ErrorCatalogue.hpp"

#include <cstring>
#include <cwchar>

namespace
{
#define FPC_WIDE_TEXT(text) L##text
#define FPC_CATALOGUE_ROW(name, code, text) {code, text, FPC_WIDE_TEXT(text), #name, FPC_WIDE_TEXT(#name)},
const ST_ErrorMapEntry g_aErrorMap[] = {FPC_ERROR_CATALOGUE(FPC_CATALOGUE_ROW)};
#undef FPC_CATALOGUE_ROW

// The constant's name is misspelt in every component of the family; applications compare it, so it stays.
#define FPC_UNKNOWN_ROW                                                                                                \
    {                                                                                                                  \
        2147483647L, "Unknown error code.", L"Unknown error code.", "FPC_ERROR_UNKOWN_ERROR_CODE",                     \
            L"FPC_ERROR_UNKOWN_ERROR_CODE"                                                                             \
    }

bool IsRowOf(const ST_ErrorMapEntry& cRow, long nCode)
{
    return cRow.nCode == nCode;
}

bool IsRowOf(const ST_ErrorMapEntry& cRow, const char* szName)
{
    return szName != nullptr && std::strcmp(cRow.szName, szName) == 0;
}

bool IsRowOf(const ST_ErrorMapEntry& cRow, const wchar_t* wszName)
{
    return wszName != nullptr && std::wcscmp(cRow.wszName, wszName) == 0;
}
} // namespace

template <class Key> const ST_ErrorMapEntry& GetErrorInfoT(Key key)
{
    static const ST_ErrorMapEntry sUnknown = FPC_UNKNOWN_ROW;
    for (const ST_ErrorMapEntry& cRow : g_aErrorMap)
    {
        if (IsRowOf(cRow, key))
        {
            return cRow;
        }
    }
    return sUnknown;
}

template const ST_ErrorMapEntry& GetErrorInfoT<long>(long);
template const ST_ErrorMapEntry& GetErrorInfoT<const char*>(const char*);
template const ST_ErrorMapEntry& GetErrorInfoT<const wchar_t*>(const wchar_t*);

const ST_ErrorMapEntry& GetVlmErrorInfo(long nCode)
{
    return GetErrorInfoT<long>(nCode);
}

const ST_ErrorMapEntry& GetVlmErrorInfo(const char* szName)
{
    return GetErrorInfoT<const char*>(szName);
}

const ST_ErrorMapEntry& GetVlmErrorInfo(const wchar_t* wszName)
{
    return GetErrorInfoT<const wchar_t*>(wszName);
}

const char* GetErrorDescriptionIntern(long nCode)
{
    return GetVlmErrorInfo(nCode).szDescription;
}

const wchar_t* GetErrorDescriptionInternW(long nCode)
{
    return GetVlmErrorInfo(nCode).wszDescription;
}
