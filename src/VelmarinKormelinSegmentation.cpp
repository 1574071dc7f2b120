#include "VelmarinKormelinSegmentation.h"

#include "KormelinSegmentHandle.hpp"
#include "KormelinSegmentation.hpp"
#include "KormelinSegmentationHandle.hpp"
#include "RDTools/IgnoreFailure.hpp"

namespace
{
/// The log lines of an exported function. Every format begins with the function's name and its arguments.
struct ClCallFormat
{
    const char* m_szEnter;
    const char* m_szLeave;
    const char* m_szError;
};

#define KS_CALL_FORMAT(head)                                                                                           \
    {                                                                                                                  \
        head " Enter", head " Leave", head " Error(%d): %s"                                                            \
    }

// Pointers are logged as addresses and never followed.
const void* LogArgument(const void* pArgument)
{
    return pArgument;
}

template <class T> std::enable_if_t<std::is_arithmetic_v<T>, T> LogArgument(T value)
{
    return value;
}

template <class... Args>
void LogFailure(const ClCallFormat& cFormat, long nCode, const char* szFunction, Args... args) noexcept
{
    // The caller needs the number of its own failure, not that of the line about it.
    IgnoreFailure(
        [&]
        {
            ClKormelinSegmentation::LogF(eLogError, cFormat.m_szError, szFunction, args..., static_cast<int>(nCode),
                                         GetErrorDescriptionIntern(nCode));
        });
}

/// The frame of every call: Enter line, body, Leave line, 0. A ClException becomes the Error line and its number; an
/// allocation that failed unnoticed counts as ClExBadAlloc. Other exceptions are not of the library's making and pass.
template <class Body, class... Args>
long RunExported(const ClCallFormat& cFormat, Body&& body, const char* szFunction, Args... args)
{
    try
    {
        ConvertBadAlloc(
            [&]
            {
                ClKormelinSegmentation::LogF(eLogDebug, cFormat.m_szEnter, szFunction, LogArgument(args)...);
                body();
                ClKormelinSegmentation::LogF(eLogDebug, cFormat.m_szLeave, szFunction, LogArgument(args)...);
            });
        return FPC_SUCCESS;
    }
    catch (const ClException& cFailure)
    {
        const long nCode = cFailure.Number();
        LogFailure(cFormat, nCode, szFunction, LogArgument(args)...);
        return nCode;
    }
}

void ThrowOnFailure(long nCode, long nLine)
{
    if (nCode != FPC_SUCCESS)
    {
        throw ClExVelmarin(nCode, "VelmarinKormelinSegmentation", nLine);
    }
}

ClHandleBase& AnyHandle(void* handle)
{
    return *ClHandleBase::GetClassBase(handle);
}

/// The object of a handle of one kind.
template <class Class> Class* HandleOf(void* handle)
{
    Class* pObject = nullptr;
    TpSafeHandle<Class, &Class::m_szSignature, &Class::m_szSignature>::CheckHandle(handle, &pObject);
    return pObject;
}
} // namespace

// ---- The library

long KSInitialize(const char* szParameter)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p)");
    return RunExported(
        cFormat, [&] { ThrowOnFailure(ClKormelinSegmentation::Initialize(szParameter), __LINE__); }, __func__,
        szParameter);
}

long KSUninitialize()
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(void)");
    return RunExported(
        cFormat, [] { ThrowOnFailure(ClKormelinSegmentation::Uninitialize(), __LINE__); }, __func__);
}

long KSGetVersionA(char* pszVersion, unsigned long* pnSize)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p)");
    return RunExported(
        cFormat, [&] { ClKormelinSegmentation::GetVersion(pszVersion, pnSize); }, __func__, pszVersion, pnSize);
}

const char* KSGetErrorDescriptionA(long nError)
{
    return GetErrorDescriptionIntern(nError);
}

// ---- Handles

long KSCreateSegmentationHandle(void** phHandle)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p)");
    return RunExported(
        cFormat, [&] { ClKormelinSegmentationHandle::CreateHandle(phHandle); }, __func__, phHandle);
}

long KSCreateSegmentHandle(void** phHandle)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p)");
    return RunExported(
        cFormat, [&] { ClKormelinSegmentHandle::CreateHandle(phHandle); }, __func__, phHandle);
}

long KSDestroyHandle(void** phHandle)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p)");
    return RunExported(
        cFormat, [&] { ClHandleBase::DestroyHandle(phHandle); }, __func__, phHandle);
}

// ---- Properties

long KSGetPropertyA(void* handle, const char* szName, char* pszValue, unsigned long* pnSize)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %p, %p)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).GetProperty(szName, pszValue, pnSize); }, __func__, handle, szName, pszValue,
        pnSize);
}

long KSSetPropertyA(void* handle, const char* szName, const char* szValue)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %p)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).SetProperty(szName, szValue); }, __func__, handle, szName, szValue);
}

long KSGetPropertyLongA(void* handle, const char* szName, long* pnValue)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %p)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).GetPropertyLong(szName, pnValue); }, __func__, handle, szName, pnValue);
}

long KSSetPropertyLongA(void* handle, const char* szName, long nValue)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %ld)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).SetPropertyLong(szName, nValue); }, __func__, handle, szName, nValue);
}

long KSGetPropertyDoubleA(void* handle, const char* szName, double* pdValue)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %p)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).GetPropertyDouble(szName, pdValue); }, __func__, handle, szName, pdValue);
}

long KSSetPropertyDoubleA(void* handle, const char* szName, double dValue)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %f)");
    return RunExported(
        cFormat, [&] { AnyHandle(handle).SetPropertyDouble(szName, dValue); }, __func__, handle, szName, dValue);
}

// ---- Segmentation

long KSSegmentBitmap(void* handle, const tagBITMAPINFOHEADER* pBitmap, unsigned long nSize)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %zu)");
    return RunExported(
        cFormat, [&] { HandleOf<ClKormelinSegmentationHandle>(handle)->SegmentBitmap(pBitmap, nSize); }, __func__,
        handle, pBitmap, static_cast<std::size_t>(nSize));
}

long KSGetSegment(void* hSegmentation, int nIndex, void* hSegment)
{
    // The format names one value more than there are arguments, and the segment handle stands at a number's place; who
    // reads the log knows it so.
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %zu, %zu, %p)");
    const void* pNoArgument = nullptr;
    return RunExported(
        cFormat,
        [&]
        {
            auto* pSegmentation = HandleOf<ClKormelinSegmentationHandle>(hSegmentation);
            auto* pSegment = HandleOf<ClKormelinSegmentHandle>(hSegment);
            pSegmentation->GetSegment(pSegmentation, nIndex, pSegment);
        },
        __func__, hSegmentation, static_cast<std::size_t>(nIndex), reinterpret_cast<std::size_t>(hSegment),
        pNoArgument);
}

long KSGetBitmap(void* handle, tagBITMAPINFOHEADER* pBitmap, unsigned long* pnSize)
{
    static constexpr ClCallFormat cFormat = KS_CALL_FORMAT("%s(%p, %p, %p)");
    return RunExported(
        cFormat, [&] { HandleOf<ClKormelinSegmentHandle>(handle)->GetBitmap(pBitmap, pnSize); }, __func__, handle,
        pBitmap, pnSize);
}
