// Every operator with settings and images as the bytes say: small images of every type, with and without pixels, up to
// five planes, settings through the members and through their texts. Each run is done twice, over memory that differs
// and, where the operator allows that, the second time in place: same code, same samples. Inputs stay as they were.

#include "OperatorFuzzSetups.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterEnum.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

namespace
{
/// The codes that operators answer with.
constexpr long g_anCodes[] = {FPC_SUCCESS,
                              FPC_ERROR_BITMAP_PTR,
                              FPC_ERROR_BITMAP_PLANE,
                              FPC_ERROR_BITMAP_PELS,
                              FPC_ERROR_BITMAP_DIMENSION,
                              FPC_ERROR_FORMAT_NOTSUPPORTED,
                              FPC_ERROR_PARAM_OUT_OF_RANGE,
                              FPC_ERROR_PARAM_IS_MISSING,
                              FPC_ERROR_PARAM_INVALID,
                              FPC_ERROR_INTERNAL,
                              FPC_ERROR_OUT_OF_MEMORY,
                              FPC_ERROR_BAD_POINTER};

std::string NameOfValue(ClParameterEnumInterface& cEnum, unsigned long nIndex)
{
    std::string sName(cEnum.GetValueName(nIndex, nullptr, 0), ' ');
    cEnum.GetValueName(nIndex, sName.data(), sName.size() + 1);
    return sName;
}

std::string TextOfValue(ClParameter& cParameter, ClByteSource& cBytes)
{
    ClParameterEnumInterface* const pEnum = cParameter.GetEnumInterface();
    if (pEnum != nullptr && pEnum->GetValueNameCount() > 0 && !cBytes.OneIn(8))
        return NameOfValue(*pEnum, cBytes.Byte() % pEnum->GetValueNameCount());
    switch (cBytes.Byte() % 8)
    {
    case 0: return "nan";
    case 1: return "-inf";
    case 2: return cBytes.Text(12);
    case 3: return std::to_string(cBytes.Byte() / 100.0);
    case 4: return std::to_string(cBytes.Number());
    default: return std::to_string(cBytes.Byte() % 32);
    }
}

/// Few settings through their texts; what is taken can be read, and be set again from what was read.
void SetParameters(ClProcessorBase& cOperator, ClByteSource& cBytes)
{
    ClParameterContainer cParameters;
    cOperator.QueryParameters(cParameters);
    for (ClParameter* p = cParameters.GetFirstParameter(); p != nullptr; p = cParameters.GetNextParameter(p))
    {
        if (p->IsPointer() || !cBytes.OneIn(3)) continue;
        const std::string sValue = TextOfValue(*p, cBytes);
        try
        {
            p->SetValue(sValue.c_str());
        }
        catch (const ClException& e)
        {
            PromiseCode(e.Number()); // refused: the setting stays
            continue;
        }
        const std::string sRead = p->ClParameter::GetValue();
        if (sRead.find("nan") == std::string::npos && sRead.find("inf") == std::string::npos)
            p->SetValue(sRead.c_str());
    }
}

/// A new operator of the same class takes the settings over, and then describes them alike.
void CopySettings(ClProcessorBase& cOperator)
{
    const std::unique_ptr<ClProcessorBase> pOther(cOperator.Create());
    Promise(std::strcmp(pOther->Name(), cOperator.Name()) == 0, "an operator of the same class");
    cOperator.CopyParametersTo(*pOther);
}

void DescribeSettings(ClProcessorBase& cOperator, unsigned long nSize, ClDigest& cDigest)
{
    const std::unique_ptr<char[]> pText(new char[nSize]); // exactly: the sanitizer guards its end
    try
    {
        cOperator.ParameterString(pText.get(), nSize);
        const auto* const pEnd = static_cast<const char*>(std::memchr(pText.get(), 0, nSize));
        Promise(pEnd != nullptr, "a settings text ends");
        cDigest.AddBytes(pText.get(), static_cast<std::size_t>(pEnd - pText.get()));
    }
    catch (const ClException& e)
    {
        Promise(e.Number() == FPC_ERROR_INTERNAL, "only a text that does not fit is refused");
    }
}

struct StOutcome
{
    bool m_bRun = false;
    bool m_bMayBeInput = false;
    bool m_bDetermined = false;
    long m_nCode = 0;
    std::uint64_t m_nOutput = 0;  ///< the image that may be the input
    std::uint64_t m_nResults = 0; ///< what an operator leaves beside its first output
};

std::uint64_t SumOf(const ClImage* pFirst, const ClImage* pEnd)
{
    ClDigest cDigest;
    for (; pFirst != pEnd; ++pFirst) cDigest.Add(*pFirst);
    return cDigest.Sum();
}

void Apply(StBench& c, StOutcome& cOutcome)
{
    ClDigest cResults;
    try
    {
        c.m_pOperator->CanApply();
        cOutcome.m_nCode = c.m_pOperator->Apply();
        DescribeSettings(*c.m_pOperator, c.m_cBytes.Byte(), cResults);
        if (cOutcome.m_nCode == FPC_SUCCESS) c.m_fnResults(cResults);
    }
    catch (const ClException& e)
    {
        Promise(e.Number() < 0 && e.What() != nullptr && *e.What() != '\0', "a code and a text");
        cOutcome.m_nCode = e.Number();
    }
    cOutcome.m_nResults = cResults.Sum();
}

/// Whether planes that were taken apart can be put together again. Where they cannot, some operators leave the output
/// as it was and answer with success.
bool CanJoin(const ClImage& cImage)
{
    return cImage.m_nPlanes < 2 || (cImage.m_eContent <= ClImage::eCIELUV && cImage.m_eContent != ClImage::eXYZ &&
                                    cImage.m_eContent != ClImage::eCIELab);
}

StOutcome Run(unsigned nOperator, const ClByteSource& cBytes, bool bInPlace, unsigned char nMemory)
{
    FillNewMemory(nMemory);
    StOutcome cOutcome;
    StBench c(cBytes, bInPlace);
    SetUpOperator(nOperator, c);
    if (c.m_cBytes.OneIn(4)) SetParameters(*c.m_pOperator, c.m_cBytes);
    if (c.m_cBytes.OneIn(16)) CopySettings(*c.m_pOperator);
    if (!c.m_fnIsModest()) return cOutcome;
    cOutcome.m_bRun = true;
    cOutcome.m_bMayBeInput = c.m_bMayBeInput;
    cOutcome.m_bDetermined = c.m_fnIsDetermined() && CanJoin(c.In()); // now: the output may be an input
    const ClImage* const pFirst = c.m_acIn + ((bInPlace && c.m_bMayBeInput) || c.m_bOutputIsInput ? 1 : 0);
    const std::uint64_t nBefore = SumOf(pFirst, std::end(c.m_acIn));
    Apply(c, cOutcome);
    if (SumOf(pFirst, std::end(c.m_acIn)) != nBefore)
    {
        std::fprintf(stderr, "%s: code %ld\n", c.m_pOperator->Name(), cOutcome.m_nCode);
        FailPromise("inputs are never written to");
    }
    if (std::find(std::begin(g_anCodes), std::end(g_anCodes), cOutcome.m_nCode) == std::end(g_anCodes))
    {
        std::fprintf(stderr, "%s: code %ld\n", c.m_pOperator->Name(), cOutcome.m_nCode);
        FailPromise("a code that operators answer with");
    }
    if (cOutcome.m_nCode != FPC_SUCCESS) return cOutcome;
    cOutcome.m_nOutput = SumOf(c.Out(), c.Out() + 1);
    cOutcome.m_nResults ^= SumOf(c.m_acOut + 1, std::end(c.m_acOut));
    return cOutcome;
}

/// Tells of a difference what was run.
void PromiseSame(unsigned nOperator, const ClByteSource& cBytes, const StOutcome& cFirst, const StOutcome& cSecond)
{
    const bool bCode = cFirst.m_nCode == cSecond.m_nCode;
    const bool bOutput = !cFirst.m_bDetermined || cFirst.m_nOutput == cSecond.m_nOutput;
    const bool bResults = !cFirst.m_bDetermined || cFirst.m_nResults == cSecond.m_nResults;
    if (bCode && bOutput && bResults) return;
    StBench c(cBytes, false);
    SetUpOperator(nOperator, c);
    std::fprintf(stderr, "%s of type %d, %d by %d, %d planes: codes %ld and %ld\n", c.m_pOperator->Name(),
                 c.In().m_eDataType, c.In().m_nWidth, c.In().m_nHeight, c.In().m_nPlanes, cFirst.m_nCode,
                 cSecond.m_nCode);
    Promise(bCode, "the same input gives the same code");
    Promise(bOutput, "the same input gives the same output");
    Promise(bResults, "the same input gives the same results");
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    const unsigned nOperator = cBytes.Byte() % OperatorCount();
    const bool bTryInPlace = cBytes.Byte() % 2 != 0;
    try
    {
        const StOutcome cFirst = Run(nOperator, cBytes, false, 0x00);
        if (!cFirst.m_bRun) return 0;
        const StOutcome cSecond = Run(nOperator, cBytes, bTryInPlace && cFirst.m_bMayBeInput, 0xff);
        PromiseSame(nOperator, cBytes, cFirst, cSecond);
    }
    catch (const ClException& e)
    {
        PromiseCode(e.Number()); // an image that cannot be made
    }
    FillNewMemory(0);
    return 0;
}
