#pragma once

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/SDKHelper.hpp"
#include "RDTools/SafeHandle.hpp"

#include <memory>

/// What a property holds.
enum enumType_t : int
{
    eTypeInteger = 0,
    eTypeFloat = 1,
    eTypeOther = 2 ///< text, enumeration
};

/// What a caller may do with a property: a sum of bits.
enum enumAccess_t : int
{
    eAccessNone = 0,
    eAccessWrite = 1,
    eAccessRead = 2
};

/// The property operations of handles on a tree of parameters. Every operation that takes a name begins with these
/// tests: a null name ClExVelmarin -44; a name out of the tree -206. Types are strict: a floating-point operation on an
/// integer fails, only text fits all.
namespace SDKHandleProperties
{
/// The property of a name. Errors: the two tests above.
ClParameter* FindProperty(ClParameterContainer& cProperties, const char* szName);

/// Any value as text, by the text convention of ClParameter; a buffer of at least 2 bytes first gets an empty text.
/// Errors: pnSize null -24, a size that is too small -21.
void GetText(ClParameterContainer& cProperties, const char* szName, char* pszValue, unsigned long* pnSize);
/// Errors: not writable -47; those of the parameter's SetValue.
void SetText(ClParameterContainer& cProperties, const char* szName, const char* szValue);
/// An integer or an enumeration. Errors: any other property -44.
void GetLong(ClParameterContainer& cProperties, const char* szName, long* pnValue);
/// Errors: neither integer nor enumeration -44, not writable -47; a value out of range ClExRange -35.
void SetLong(ClParameterContainer& cProperties, const char* szName, long nValue);
/// A floating-point number. Errors: any other property -44.
void GetDouble(ClParameterContainer& cProperties, const char* szName, double* pdValue);
/// Errors: no floating-point number -44, not writable -47; a value out of range ClExRange -35.
void SetDouble(ClParameterContainer& cProperties, const char* szName, double dValue);
/// Errors: pnSize null -24, no block of bytes -44, a size that is too small -21.
void GetBlob(ClParameterContainer& cProperties, const char* szName, void* pValue, unsigned long* pnSize);
/// Errors: no block of bytes -44.
void SetBlob(ClParameterContainer& cProperties, const char* szName, const void* pValue, unsigned long nSize);
/// Errors: peType null -23.
void GetType(ClParameterContainer& cProperties, const char* szName, enumType_t* peType);
/// Errors: peAccess null -23.
void GetAccess(ClParameterContainer& cProperties, const char* szName, enumAccess_t* peAccess);
/// Bounds of a floating-point number, into those pointers that are given.
/// Errors: no number -103, no range -103, no floating-point number -44, both pointers null -23.
void GetRangeDouble(ClParameterContainer& cProperties, const char* szName, double* pdMin, double* pdMax);
/// The same for an integer, -44 for any other number.
void GetRangeLong(ClParameterContainer& cProperties, const char* szName, long* pnMin, long* pnMax);

/// The path name of a property. Errors: those of SDKHelper::GetData.
void GiveName(const ClParameter& cProperty, char* pszName, unsigned long* pnSize);
/// The end of an enumeration: an empty text, if there is room, and the size 0. Errors: pnSize null -24.
void GiveEnd(char* pszText, unsigned long* pnSize);
/// The enumeration with at least one entry behind a name. Errors: a name out of the tree -206, null included; no such
/// enumeration -103.
ClParameterEnumInterface* FindEnumeration(ClParameterContainer& cProperties, const char* szName);
/// Name number nIndex of an enumeration, and nIndex goes up by one; behind the last one the end. Errors: the same.
void GiveNextValue(ClParameterEnumInterface* pEnumeration, unsigned long& nIndex, char* pszValue,
                   unsigned long* pnSize);
/// An enumeration that was not begun: ClException -50.
[[noreturn]] void ThrowNotBegun();
/// A null address of a handle: ClException "handle reference is NULL pointer" with nNumber.
[[noreturn]] void ThrowNullReference(long nNumber);
} // namespace SDKHandleProperties

/// What handles of all kinds share without knowing their class. Base is the abstract handle; Base::Signature_t lists
/// the stamps of all kinds.
template <class Base, class Library> class TSDKHandleBaseBase
{
public:
    /// The object of a handle of any kind.
    /// Errors: ClExVelmarin -42 for null, -43 for anything but a handle.
    static Base* GetClassBase(const void* pHandle)
    {
        return GuardHandleCheck(
            [pHandle]
            {
                if (pHandle == nullptr)
                {
                    throw ClExVelmarin(FPC_ERROR_NO_HANDLE, szModule, __LINE__);
                }
                for (const char* szSignature : Base::Signature_t::m_szSignatures)
                {
                    if (ClHandleRecord::IsStamped(pHandle, szSignature))
                    {
                        // The record holds the derived class's pointer: the same address, as Base is its only base.
                        return static_cast<Base*>(ClHandleRecord::Object(pHandle, szSignature, szSignature));
                    }
                }
                throw ClExVelmarin(FPC_ERROR_INVALID_HANDLE, szModule, __LINE__);
            });
    }

    /// Destroys a handle of any kind; *phHandle becomes null.
    /// Errors: phHandle null ClException -44; those of GetClassBase, *phHandle stays.
    static void DestroyHandle(void** phHandle)
    {
        if (phHandle == nullptr)
        {
            SDKHandleProperties::ThrowNullReference(FPC_ERROR_INVALID_PARAMETER);
        }
        GetClassBase(*phHandle)->Delete(phHandle);
    }

    static char* m_szpVersion; ///< the "Version" of every handle

private:
    static constexpr const char* szModule = "RDTools/SDKHandleBase.hpp";
};

// Never written: the property that shows it is read only.
template <class Base, class Library>
char* TSDKHandleBaseBase<Base, Library>::m_szpVersion = const_cast<char*>(Library::m_szVersion);

/// The operations of a handle of any kind. Derived is the library's abstract handle, which lists the stamps.
template <class Derived, class Library> class TSDKHandleInterface : public TSDKHandleBaseBase<Derived, Library>
{
public:
    virtual ~TSDKHandleInterface() = default;

    // Properties by name: see SDKHandleProperties.
    virtual void GetProperty(const char* szName, char* pszValue, unsigned long* pnSize) = 0;
    virtual void SetProperty(const char* szName, const char* szValue) = 0;
    virtual void GetPropertyLong(const char* szName, long* pnValue) = 0;
    virtual void SetPropertyLong(const char* szName, long nValue) = 0;
    virtual void GetPropertyDouble(const char* szName, double* pdValue) = 0;
    virtual void SetPropertyDouble(const char* szName, double dValue) = 0;
    virtual void GetPropertyBlob(const char* szName, void* pValue, unsigned long* pnSize) = 0;
    virtual void SetPropertyBlob(const char* szName, const void* pValue, unsigned long nSize) = 0;

    /// The name of the first property, by the size protocol of SDKHelper::GetData. Builds the tree anew.
    virtual void PropertyEnumerateFirst(char* pszName, unsigned long* pnSize) = 0;
    /// The name of the next one; at the end an empty text and the size 0. A size that is too small does not advance.
    /// Errors: ClException -50 if no property operation came before.
    virtual void PropertyEnumerateNext(char* pszName, unsigned long* pnSize) = 0;
    virtual void GetPropertyType(const char* szName, enumType_t* peType) = 0;
    virtual void GetPropertyAccess(const char* szName, enumAccess_t* peAccess) = 0;
    virtual void GetPropertyRangeLong(const char* szName, long* pnMin, long* pnMax) = 0;
    virtual void GetPropertyRangeDouble(const char* szName, double* pdMin, double* pdMax) = 0;
    /// The names of the values of an enumerated property, as those of the properties.
    virtual void GetPropertyValueEnumerateFirst(const char* szName, char* pszValue, unsigned long* pnSize) = 0;
    virtual void GetPropertyValueEnumerateNext(char* pszValue, unsigned long* pnSize) = 0;

    // Lists of handles: no kind of handle is one. ClExVelmarin -209.
    virtual void GetAt(unsigned long nIndex, void* hEntry) = 0;
    virtual void SetAt(unsigned long nIndex, void* hEntry) = 0;
    virtual void Clear() = 0;
    virtual void Insert(unsigned long nIndex, void* hEntry) = 0;
    virtual void Remove(unsigned long nIndex) = 0;

    virtual void Reset() = 0;
    /// Destroys this object and its record; *phHandle becomes null.
    /// Errors: phHandle null ClExVelmarin -44; *phHandle no handle of this kind -42, -43, it stays.
    virtual void Delete(void** phHandle) = 0;

    virtual void QueryPropertys() = 0; ///< builds the tree of properties, if there is none
    virtual void OnCreateHandle() = 0;
    virtual void OnDestroyHandle() = 0;
    /// Adds the properties of a kind of handle.
    virtual void OnQueryPropertys(ClParameterContainer&) {}
    virtual void ResetProperties() = 0; ///< deletes the tree and ends the enumerations
};

/// A handle of one kind. Class is the final class and gives its stamp, m_szSignature; Base is the abstract handle.
/// The tree of properties is built by the first property operation, and the values which the members then have become
/// its stored defaults.
template <class Class, class Library, class Base> class TSDKHandleBase : public Base
{
public:
    /// Makes a handle. Errors, in order: library not initialised ClException -2, *phHandle is untouched; phHandle null
    /// ClException -701; no memory -102, *phHandle is null.
    static void CreateHandle(void** phHandle)
    {
        if (Library::m_nReferenceCount == 0)
        {
            throw ClException("Initialization required prior to handle creation", FPC_ERROR_NOT_INITIALIZED, true,
                              szModule, __LINE__);
        }
        if (phHandle == nullptr)
        {
            SDKHandleProperties::ThrowNullReference(FPC_ERROR_BAD_POINTER);
        }
        *phHandle = nullptr;
        ThrowOnFailure(SafeHandle<Class>::CreateHandle(phHandle));
        Class* pObject = nullptr;
        SafeHandle<Class>::CheckHandle(*phHandle, &pObject);
        pObject->OnCreateHandle();
    }

    void GetProperty(const char* szName, char* pszValue, unsigned long* pnSize) override
    {
        if (pnSize != nullptr && pszValue != nullptr && *pnSize >= 2)
        {
            pszValue[0] = '\0'; // even if the property does not exist
        }
        SDKHandleProperties::GetText(Properties(), szName, pszValue, pnSize);
    }
    void SetProperty(const char* szName, const char* szValue) override
    {
        SDKHandleProperties::SetText(Properties(), szName, szValue);
    }
    void GetPropertyLong(const char* szName, long* pnValue) override
    {
        SDKHandleProperties::GetLong(Properties(), szName, pnValue);
    }
    void SetPropertyLong(const char* szName, long nValue) override
    {
        SDKHandleProperties::SetLong(Properties(), szName, nValue);
    }
    void GetPropertyDouble(const char* szName, double* pdValue) override
    {
        SDKHandleProperties::GetDouble(Properties(), szName, pdValue);
    }
    void SetPropertyDouble(const char* szName, double dValue) override
    {
        SDKHandleProperties::SetDouble(Properties(), szName, dValue);
    }
    void GetPropertyBlob(const char* szName, void* pValue, unsigned long* pnSize) override
    {
        SDKHandleProperties::GetBlob(Properties(), szName, pValue, pnSize);
    }
    void SetPropertyBlob(const char* szName, const void* pValue, unsigned long nSize) override
    {
        SDKHandleProperties::SetBlob(Properties(), szName, pValue, nSize);
    }

    void PropertyEnumerateFirst(char* pszName, unsigned long* pnSize) override
    {
        ResetProperties();
        QueryPropertys();
        m_pEnumerateParameter = m_pProperties->GetFirstParameter();
        SDKHandleProperties::GiveName(*m_pEnumerateParameter, pszName, pnSize); // "Version" is always there
    }
    void PropertyEnumerateNext(char* pszName, unsigned long* pnSize) override
    {
        if (m_pProperties == nullptr)
        {
            SDKHandleProperties::ThrowNotBegun();
        }
        ClParameter* pNext = m_pProperties->GetNextParameter(m_pEnumerateParameter);
        if (pNext == nullptr)
        {
            SDKHandleProperties::GiveEnd(pszName, pnSize);
            return;
        }
        SDKHandleProperties::GiveName(*pNext, pszName, pnSize);
        m_pEnumerateParameter = pNext;
    }

    void GetPropertyType(const char* szName, enumType_t* peType) override
    {
        SDKHandleProperties::GetType(Properties(), szName, peType);
    }
    void GetPropertyAccess(const char* szName, enumAccess_t* peAccess) override
    {
        SDKHandleProperties::GetAccess(Properties(), szName, peAccess);
    }
    void GetPropertyRangeLong(const char* szName, long* pnMin, long* pnMax) override
    {
        SDKHandleProperties::GetRangeLong(Properties(), szName, pnMin, pnMax);
    }
    void GetPropertyRangeDouble(const char* szName, double* pdMin, double* pdMax) override
    {
        SDKHandleProperties::GetRangeDouble(Properties(), szName, pdMin, pdMax);
    }

    void GetPropertyValueEnumerateFirst(const char* szName, char* pszValue, unsigned long* pnSize) override
    {
        m_pEnumerateValues = SDKHandleProperties::FindEnumeration(Properties(), szName);
        m_nEnumerateIndex = 0;
        GetPropertyValueEnumerateNext(pszValue, pnSize);
    }
    void GetPropertyValueEnumerateNext(char* pszValue, unsigned long* pnSize) override
    {
        SDKHandleProperties::GiveNextValue(m_pEnumerateValues, m_nEnumerateIndex, pszValue, pnSize);
    }

    void GetAt(unsigned long, void*) override { ThrowNoList(__LINE__); }
    void SetAt(unsigned long, void*) override { ThrowNoList(__LINE__); }
    void Clear() override { ThrowNoList(__LINE__); }
    void Insert(unsigned long, void*) override { ThrowNoList(__LINE__); }
    void Remove(unsigned long) override { ThrowNoList(__LINE__); }

    void Reset() override {}

    void Delete(void** phHandle) override
    {
        if (phHandle == nullptr)
        {
            throw ClExVelmarin(FPC_ERROR_INVALID_PARAMETER, szModule, __LINE__);
        }
        Class* pObject = nullptr;
        SafeHandle<Class>::CheckHandle(*phHandle, &pObject);
        pObject->OnDestroyHandle();
        ThrowOnFailure(SafeHandle<Class>::DeleteHandle(phHandle));
    }

    /// Errors: two properties of the same name ClExVelmarin -46; there is no tree then.
    void QueryPropertys() override
    {
        if (m_pProperties != nullptr)
        {
            return;
        }
        std::unique_ptr<ClParameterContainer> pProperties(ConvertBadAlloc([] { return new ClParameterContainer; }));
        auto* pVersion =
            pProperties->template AddParam<TpParameterString<char*, ClParameter, 0>>("Version", &Base::m_szpVersion);
        pVersion->m_nFlags = ClParameter::eReadable;
        this->OnQueryPropertys(*pProperties);
        m_pProperties = std::move(pProperties);
    }
    void OnCreateHandle() override {}
    void OnDestroyHandle() override {}
    void ResetProperties() override
    {
        m_pProperties.reset();
        m_pEnumerateParameter = nullptr;
        m_pEnumerateValues = nullptr;
        m_nEnumerateIndex = 0;
    }

    std::unique_ptr<ClParameterContainer> m_pProperties;    ///< bound to the members of Class; null until it is needed
    ClParameter* m_pEnumerateParameter = nullptr;           ///< the property whose name was given last
    ClParameterEnumInterface* m_pEnumerateValues = nullptr; ///< the property whose values are enumerated
    unsigned long m_nEnumerateIndex = 0;                    ///< the value that comes next

private:
    static constexpr const char* szModule = "RDTools/SDKHandleBase.hpp";

    // A template, because Class is complete only where a member function uses it.
    template <class C> using SafeHandle = TpSafeHandle<C, &C::m_szSignature, &C::m_szSignature>;

    ClParameterContainer& Properties()
    {
        QueryPropertys();
        return *m_pProperties;
    }

    static void ThrowOnFailure(long nResult)
    {
        if (nResult != FPC_SUCCESS)
        {
            throw ClExVelmarin(nResult, szModule, __LINE__);
        }
    }

    [[noreturn]] static void ThrowNoList(long nLine) { throw ClExVelmarin(FPC_ERROR_VALUE_WRONG, szModule, nLine); }
};
