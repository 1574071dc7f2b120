#include "PropertySteps.hpp"

#include "Promise.hpp"

#include "HandleBase.hpp"
#include "RDTools/Exception.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <strings.h>

namespace
{
constexpr char szVersion[] = "1.1.1407.3";

/// What a name leads to.
struct StFound
{
    enum EKind
    {
        eRoot, ///< the tree itself
        eText,
        eReadOnly,
        eSwitch
    };

    long m_nCode; ///< 0, or why it leads to nothing
    EKind m_eKind = eRoot;
    long* m_pnValue = nullptr;
};

StFound PropertyNamed(const std::string& sName, StHandleModel& c)
{
    struct StRow
    {
        const char* szName;
        StHandleModel::EKind eOwner;
        StFound::EKind eKind;
        long* pnValue;
    };
    static long nNoPosition = 0;
    const StRow aRows[] = {{"Count", StHandleModel::eSegmentation, StFound::eReadOnly, &c.m_nCount},
                           {"CoordinateOrigin", StHandleModel::eSegmentation, StFound::eSwitch, &c.m_nOrigin},
                           {"SegmentationMode", StHandleModel::eSegmentation, StFound::eSwitch, &c.m_nMode},
                           {"x", StHandleModel::eSegment, StFound::eReadOnly, &c.m_nX},
                           {"y", StHandleModel::eSegment, StFound::eReadOnly, &c.m_nY},
                           {"Height", StHandleModel::eSegment, StFound::eReadOnly, &c.m_nHeight},
                           {"Width", StHandleModel::eSegment, StFound::eReadOnly, &c.m_nWidth},
                           {"FingerPosition", StHandleModel::eSegment, StFound::eReadOnly, &nNoPosition}};
    if (strcasecmp(sName.c_str(), "Version") == 0) return {FPC_SUCCESS, StFound::eText};
    for (const StRow& cRow : aRows)
        if (cRow.eOwner == c.m_eKind && strcasecmp(sName.c_str(), cRow.szName) == 0)
            return {FPC_SUCCESS, cRow.eKind, cRow.pnValue};
    return {FPC_ERROR_UNKNOWN_PARAMETER};
}

/// The rules of paths in a tree without branches: leading points lead to its root, and what follows a name counts for
/// nothing. A part of exactly 255 characters is refused.
StFound Find(const char* szPath, StHandleModel& c)
{
    if (szPath == nullptr) return {FPC_ERROR_INVALID_PARAMETER};
    const std::string sPath = szPath;
    const std::size_t nFirst = sPath.find_first_not_of('.');
    if (nFirst == std::string::npos && !sPath.empty()) return {FPC_SUCCESS};
    const std::string sRest = sPath.empty() ? sPath : sPath.substr(nFirst);
    const std::string sName = sRest.substr(0, sRest.find('.'));
    if (sName.size() == 255) return {FPC_ERROR_INTERNAL};
    return PropertyNamed(sName.substr(0, 255), c);
}

std::string Name(ClByteSource& cBytes)
{
    static const char* const aszNames[] = {
        "Version", "Count", "CoordinateOrigin", "SegmentationMode", "x", "y", "Height", "Width", "FingerPosition", ""};
    const unsigned nHow = cBytes.Byte();
    std::string sName = aszNames[nHow % std::size(aszNames)];
    switch (nHow / 16)
    {
    case 0: return cBytes.Text(300);
    case 1: return sName + cBytes.Text(8);
    case 2: return cBytes.Text(8) + sName;
    case 3: return std::string(cBytes.Byte() % 4, '.') + sName + std::string(cBytes.Byte() % 4, '.');
    case 4: return sName + "." + aszNames[cBytes.Byte() % std::size(aszNames)];
    case 5: return std::string(static_cast<std::size_t>(cBytes.Between(250, 260)), 'q') + "." + sName;
    case 6: return "." + sName + std::string(cBytes.Byte(), 'n');
    case 7:
        for (char& cLetter : sName)
            if (cBytes.Byte() % 2 != 0) cLetter = static_cast<char>(cLetter ^ 0x20);
        return sName;
    default: return sName;
    }
}

std::string Value(ClByteSource& cBytes)
{
    static const char* const aszValues[] = {"0",   "1",    "2",      "-1",   "",      "0x1", "0x",   "1x0", "X00",
                                            "1.9", "-0.9", "1e0",    "1e-9", "1e400", "inf", "nan",  " 1",  "1 ",
                                            "+1",  "0x2",  "0x1p-1", "01",   "1.",    ".5",  "2e18", "x-1", "\t0"};
    const unsigned nHow = cBytes.Byte();
    return nHow % 4 == 0 ? cBytes.Text(30) : aszValues[nHow / 4 % std::size(aszValues)];
}

/// The number of a switch in a text: behind the last x the digits to the base of 16, else a number cut to its integer.
long CodeOfText(const char* szText, long& nValue)
{
    if (szText == nullptr) return FPC_ERROR_INVALID_PARAMETER;
    const std::string sText = szText;
    const std::size_t nMark = sText.find_last_of("xX");
    char* szEnd = nullptr;
    double dValue;
    if (nMark != std::string::npos)
        dValue = static_cast<double>(std::strtol(szText + nMark + 1, &szEnd, 16));
    else
        dValue = std::strtod(szText, &szEnd);
    if (*szEnd != '\0' || !std::isfinite(dValue)) return FPC_ERROR_INVALID_PARAMETER;
    if (dValue <= -1.0 || dValue >= 2.0) return FPC_ERROR_PARAM_OUT_OF_RANGE;
    nValue = dValue >= 1.0 ? 1 : 0;
    return FPC_SUCCESS;
}

void Compare(long nCode, long nExpected, const char* szCall)
{
    if (nCode != nExpected) std::fprintf(stderr, "%s: %ld instead of %ld\n", szCall, nCode, nExpected);
    Promise(nCode == nExpected, "the code of a property call");
}

void GetText(void* hHandle, const char* szName, const StFound& cFound, ClByteSource& cBytes)
{
    const unsigned nHow = cBytes.Byte();
    const std::string sText = cFound.m_eKind == StFound::eText ? szVersion
                              : cFound.m_pnValue == nullptr    ? ""
                                                               : std::to_string(*cFound.m_pnValue);
    const unsigned long nGiven = nHow % 4 == 0 ? sText.size() + nHow / 4 % 3 : nHow / 4 % 20;
    unsigned long nSize = nGiven;
    const std::unique_ptr<char[]> pBuffer(new char[nGiven]); // exactly: the sanitizer guards its end
    std::memset(pBuffer.get(), '#', nGiven);
    const bool bBuffer = cBytes.Byte() % 8 != 0, bSize = cBytes.Byte() % 16 != 0;
    const long nCode = KSGetPropertyA(hHandle, szName, bBuffer ? pBuffer.get() : nullptr, bSize ? &nSize : nullptr);

    long nExpected = cFound.m_nCode;
    const bool bFits = nGiven > sText.size();
    const bool bNowhere = !bBuffer && bFits && cFound.m_eKind == StFound::eText;
    if (nExpected == FPC_SUCCESS)
        nExpected = !bSize     ? FPC_ERROR_TEMPLATE_SIZE_PTR
                    : bNowhere ? FPC_ERROR_BAD_POINTER
                    : bFits    ? FPC_SUCCESS
                               : FPC_ERROR_TEMPLATE_SIZE;
    Compare(nCode, nExpected, "KSGetPropertyA");
    const bool bAnswered = cFound.m_nCode == FPC_SUCCESS && bSize && !bNowhere;
    Promise(nSize == (bAnswered ? sText.size() + 1 : nGiven), "the size of a property's text");
    if (!bBuffer || nGiven == 0) return;
    if (nCode == FPC_SUCCESS)
    {
        Promise(std::memcmp(pBuffer.get(), sText.c_str(), sText.size() + 1) == 0, "the text of a property");
        return;
    }
    // A buffer of two bytes and more is emptied first of all, if there is a handle.
    const bool bEmptied = bSize && nGiven >= 2 && cFound.m_nCode != FPC_ERROR_NO_HANDLE;
    Promise(pBuffer[0] == (bEmptied ? '\0' : '#'), "what a failure leaves in the buffer");
}

void SetText(void* hHandle, const char* szName, const StFound& cFound, ClByteSource& cBytes)
{
    const std::string sValue = Value(cBytes);
    const char* const szValue = cBytes.Byte() % 16 == 0 ? nullptr : sValue.c_str();
    const long nCode = KSSetPropertyA(hHandle, szName, szValue);
    long nExpected = cFound.m_nCode, nValue = 0;
    if (nExpected == FPC_SUCCESS)
        nExpected =
            cFound.m_eKind == StFound::eSwitch ? CodeOfText(szValue, nValue) : long{FPC_ERROR_PARAM_IS_READONLY};
    Compare(nCode, nExpected, "KSSetPropertyA");
    if (nCode == FPC_SUCCESS) *cFound.m_pnValue = nValue;
}

void GetLong(void* hHandle, const char* szName, const StFound& cFound)
{
    long nValue = 4711;
    const long nCode = KSGetPropertyLongA(hHandle, szName, &nValue);
    long nExpected = cFound.m_nCode;
    if (nExpected == FPC_SUCCESS && cFound.m_pnValue == nullptr) nExpected = FPC_ERROR_INVALID_PARAMETER;
    Compare(nCode, nExpected, "KSGetPropertyLongA");
    Promise(nValue == (nCode == FPC_SUCCESS ? *cFound.m_pnValue : 4711), "the number of a property");
}

void SetLong(void* hHandle, const char* szName, const StFound& cFound, ClByteSource& cBytes)
{
    const long nValue = cBytes.OneIn(2) ? cBytes.Byte() % 2 : cBytes.Number();
    const long nCode = KSSetPropertyLongA(hHandle, szName, nValue);
    long nExpected = cFound.m_nCode;
    if (nExpected == FPC_SUCCESS)
        nExpected = cFound.m_pnValue == nullptr          ? FPC_ERROR_INVALID_PARAMETER
                    : cFound.m_eKind != StFound::eSwitch ? FPC_ERROR_PARAM_IS_READONLY
                    : nValue < 0 || nValue > 1           ? FPC_ERROR_PARAM_OUT_OF_RANGE
                                                         : FPC_SUCCESS;
    Compare(nCode, nExpected, "KSSetPropertyLongA");
    if (nCode == FPC_SUCCESS) *cFound.m_pnValue = nValue;
}

/// No property is a floating-point number.
void TryDouble(void* hHandle, const char* szName, const StFound& cFound, ClByteSource& cBytes)
{
    const long nExpected = cFound.m_nCode != FPC_SUCCESS ? cFound.m_nCode : long{FPC_ERROR_INVALID_PARAMETER};
    if (cBytes.Byte() % 2 == 0)
    {
        double dValue = 0.5;
        Compare(KSGetPropertyDoubleA(hHandle, szName, &dValue), nExpected, "KSGetPropertyDoubleA");
        Promise(dValue == 0.5, "no floating-point property");
        return;
    }
    const std::uint64_t nBits = cBytes.Bits(8);
    double dValue;
    std::memcpy(&dValue, &nBits, sizeof dValue);
    Compare(KSSetPropertyDoubleA(hHandle, szName, cBytes.Byte() % 2 == 0 ? dValue : 1.0), nExpected,
            "KSSetPropertyDoubleA");
}

/// The code of a call that may raise.
template <class Fn> long CodeOf(Fn&& fn)
{
    try
    {
        fn();
        return FPC_SUCCESS;
    }
    catch (const ClException& e)
    {
        return e.Number();
    }
}

/// All names in their order, each first into a buffer that is one byte too small.
void Enumerate(ClHandleBase& cHandle, const StHandleModel& cModel)
{
    static const char* const aszOfRun[] = {"Version", "Count", "CoordinateOrigin", "SegmentationMode", nullptr};
    static const char* const aszOfSegment[] = {"Version", "x", "y", "Height", "Width", "FingerPosition", nullptr};
    const auto* pszName = cModel.m_eKind == StHandleModel::eSegment ? aszOfSegment : aszOfRun;
    for (bool bFirst = true; *pszName != nullptr; ++pszName, bFirst = false)
    {
        const unsigned long nNeeded = std::strlen(*pszName) + 1;
        for (unsigned long nGiven = nNeeded - 1; nGiven <= nNeeded; ++nGiven)
        {
            unsigned long nSize = nGiven;
            const std::unique_ptr<char[]> pName(new char[nGiven]);
            const long nCode = CodeOf(
                [&]
                {
                    if (bFirst)
                        cHandle.PropertyEnumerateFirst(pName.get(), &nSize);
                    else
                        cHandle.PropertyEnumerateNext(pName.get(), &nSize);
                });
            Compare(nCode, nGiven < nNeeded ? FPC_ERROR_TEMPLATE_SIZE : FPC_SUCCESS, "the enumeration");
            Promise(nSize == nNeeded, "the size of a name");
            Promise(nCode != FPC_SUCCESS || std::strcmp(pName.get(), *pszName) == 0, "the names in their order");
        }
    }
    char cEnd = '#';
    unsigned long nSize = 1;
    Compare(CodeOf([&] { cHandle.PropertyEnumerateNext(&cEnd, &nSize); }), FPC_SUCCESS, "the end of the enumeration");
    Promise(cEnd == '\0' && nSize == 0, "the end of the enumeration");
}
} // namespace

void PropertyStep(void* hHandle, StHandleModel& cModel, ClByteSource& cBytes)
{
    const std::string sName = Name(cBytes);
    const unsigned nCall = cBytes.Byte();
    const char* const szName = nCall / 8 == 0 ? nullptr : sName.c_str();
    const StFound cFound = cModel.m_eKind == StHandleModel::eNone ? StFound{FPC_ERROR_NO_HANDLE} : Find(szName, cModel);
    switch (nCall % 8)
    {
    case 0:
    case 1: GetText(hHandle, szName, cFound, cBytes); break;
    case 2:
    case 3: SetText(hHandle, szName, cFound, cBytes); break;
    case 4: GetLong(hHandle, szName, cFound); break;
    case 5:
    case 6: SetLong(hHandle, szName, cFound, cBytes); break;
    default: TryDouble(hHandle, szName, cFound, cBytes); break;
    }
}

void InnerPropertyStep(void* hHandle, StHandleModel& cModel, ClByteSource& cBytes)
{
    if (cModel.m_eKind == StHandleModel::eNone) return;
    ClHandleBase& cHandle = *ClHandleBase::GetClassBase(hHandle);
    const std::string sName = Name(cBytes);
    const char* const szName = sName.c_str();
    const StFound cFound = Find(szName, cModel);
    const auto expect = [&cFound](long nCode) { return cFound.m_nCode != FPC_SUCCESS ? cFound.m_nCode : nCode; };
    const bool bSwitch = cFound.m_eKind == StFound::eSwitch;
    switch (cBytes.Byte() % 8)
    {
    case 0: Enumerate(cHandle, cModel); break;
    case 1:
    {
        auto eType = enumType_t();
        Compare(CodeOf([&] { cHandle.GetPropertyType(szName, &eType); }), expect(FPC_SUCCESS), "GetPropertyType");
        if (cFound.m_nCode == FPC_SUCCESS) Promise(eType == (cFound.m_pnValue != nullptr ? 0 : 2), "a type");
        break;
    }
    case 2:
    {
        auto eAccess = enumAccess_t();
        Compare(CodeOf([&] { cHandle.GetPropertyAccess(szName, &eAccess); }), expect(FPC_SUCCESS), "GetPropertyAccess");
        const int nAccess = cFound.m_eKind == StFound::eRoot ? 0 : bSwitch ? 3 : 2;
        if (cFound.m_nCode == FPC_SUCCESS) Promise(eAccess == nAccess, "an access");
        break;
    }
    case 3:
    {
        long nMin = 7, nMax = 7;
        const unsigned nWhich = cBytes.Byte() % 4;
        const long nCode = CodeOf(
            [&] {
                cHandle.GetPropertyRangeLong(szName, nWhich / 2 != 0 ? &nMin : nullptr,
                                             nWhich % 2 != 0 ? &nMax : nullptr);
            });
        const long nIfSwitch = nWhich == 0 ? FPC_ERROR_TEMPLATE_PTR_NULL : FPC_SUCCESS;
        Compare(nCode, expect(bSwitch ? nIfSwitch : long{FPC_ERROR_UNSUPPORTED_FEATURE}), "GetPropertyRangeLong");
        if (nCode == FPC_SUCCESS)
            Promise(nMin == (nWhich / 2 != 0 ? 0 : 7) && nMax == (nWhich % 2 != 0 ? 1 : 7), "a range");
        break;
    }
    case 4:
    {
        double dMin = 0.0;
        Compare(CodeOf([&] { cHandle.GetPropertyRangeDouble(szName, &dMin, nullptr); }),
                expect(bSwitch ? FPC_ERROR_INVALID_PARAMETER : FPC_ERROR_UNSUPPORTED_FEATURE),
                "GetPropertyRangeDouble");
        break;
    }
    case 5:
    {
        unsigned long nSize = 0;
        const bool bSize = cBytes.Byte() % 2 != 0;
        Compare(CodeOf([&] { cHandle.GetPropertyBlob(szName, nullptr, bSize ? &nSize : nullptr); }),
                expect(bSize ? FPC_ERROR_INVALID_PARAMETER : FPC_ERROR_TEMPLATE_SIZE_PTR), "GetPropertyBlob");
        break;
    }
    case 6:
        Compare(CodeOf([&] { cHandle.SetPropertyBlob(szName, szName, sName.size()); }),
                expect(FPC_ERROR_INVALID_PARAMETER), "SetPropertyBlob");
        break;
    default:
    {
        unsigned long nSize = 0;
        Compare(CodeOf([&] { cHandle.GetPropertyValueEnumerateFirst(szName, nullptr, &nSize); }),
                expect(FPC_ERROR_UNSUPPORTED_FEATURE), "GetPropertyValueEnumerateFirst");
        break;
    }
    }
}
