#pragma once

#include "RDTools/Exception.hpp"

#include <string>
#include <typeinfo>

class ClParameter;
class ClParameterBlobInterface;
class ClParameterContainer;
class ClParameterEnumInterface;
class ClParameterNumericInterface;

/// Root of parameters and containers: a node of a tree that is addressed by dotted paths.
class ClParameterBase
{
public:
    ClParameterBase() = default;
    ClParameterBase(const ClParameterBase&) = delete;
    ClParameterBase& operator=(const ClParameterBase&) = delete;
    virtual ~ClParameterBase();

    virtual const char* GetName() const;
    virtual void SetName(const char* szName);
    virtual const char* GetDescription() const;
    virtual void SetDescription(const char* szDescription);

    virtual ClParameterBase* Clone() = 0; ///< a new object, owned by the caller
    virtual void CopyTo(ClParameterBase* pDest) = 0;
    virtual void CopyDefaultFrom(ClParameterBase* pOther) = 0;
    virtual void CopyDefaultFromValue(ClParameterBase* pOther) = 0;
    virtual void CopyValuesFrom(ClParameterBase* pOther, bool bPointers) = 0;
    virtual void SetToDefault() = 0;
    virtual void SetToDefaultFrom(ClParameterBase* pOther) = 0;

    virtual ClParameterContainer* GetContainerInterface();
    virtual ClParameter* GetParameterInterface();
    virtual ClParameterNumericInterface* GetNumericInterface();
    virtual ClParameterEnumInterface* GetEnumInterface();
    virtual ClParameterBlobInterface* GetBlobnterface(); // the family's applications know it by this name

    virtual bool IsParameter() const;
    virtual bool IsNumeric() const;
    virtual bool IsEnum() const;
    virtual bool IsPointer() const;
    virtual bool IsString() const;
    virtual void SwapDefaultAndValue();

    /// The container interface of the topmost ancestor, or of this object if it has none.
    ClParameterContainer* GetRoot();

    /// The names from the root down, joined with points; nodes without a name are skipped. nSize is the size of the
    /// buffer and returns the size needed, terminator included. False, and nothing written, if the buffer is too small;
    /// a null buffer of sufficient size is true.
    bool GetPathName(char* szBuffer, unsigned long& nSize) const;
    std::string GetPathName() const;

    /// Replaces an owned text by a copy of szSource, or by null. Without memory: ClExBadAlloc, *ppDest is null.
    static void SetString(char** ppDest, const char* szSource);

    ClParameterContainer* m_pParent = nullptr; ///< the owning container, null for a root
};

/// A named, described value that is bound to a variable of a processor or handle. The variable outlives the parameter.
class ClParameter : public ClParameterBase
{
public:
    /// Bits of m_nFlags.
    enum EFlags : unsigned char
    {
        eWritable = 1,   ///< from outside
        eReadable = 2,   ///< from outside
        eContainer = 8,  ///< set instead of all others by containers
        eAddedMark = 16, ///< cleared when a parameter is added to a container
        eClamp = 32,     ///< a number is clamped to its range instead of being refused
        eRefuse = 64     ///< a number out of its range raises
    };

    ClParameter() = default;
    ~ClParameter() override;

    const char* GetName() const override;
    void SetName(const char* szName) override;
    const char* GetDescription() const override;
    void SetDescription(const char* szDescription) override;
    ClParameter* GetParameterInterface() override;
    bool IsParameter() const override;

    /// Sets type information, flags, name and description of pDest, a ClParameter.
    void CopyTo(ClParameterBase* pDest) override;

    virtual bool IsDefault() const = 0;
    virtual bool IsContainer() const;
    /// Text access. nSize is the size of the buffer and returns the size needed, terminator included. A null buffer
    /// measures: true if the size was sufficient. A buffer that is too small: false, nothing written.
    virtual void SetValue(const char* szValue) = 0;
    virtual bool GetValue(char* szBuffer, unsigned long& nSize) = 0;
    virtual bool GetDefaultValue(char* szBuffer, unsigned long& nSize) = 0;
    virtual void SetContainer(ClParameterContainer* pContainer);
    virtual void* GetParameterPtr() = 0; ///< address of the bound value

    std::string GetValue();
    std::string GetDefaultValue();

    char* m_szCache = nullptr;                   ///< owned text buffer
    const std::type_info* m_pTypeInfo = nullptr; ///< type of the value
    char* m_szName = nullptr;                    ///< owned
    char* m_szDescription = nullptr;             ///< owned
    char m_acTag[3] = {'D', 'P', 'I'};
    unsigned char m_nFlags = eWritable | eReadable;
};

/// Binds a value of type T. It lives behind accessor functions of an object, or, without one, at **m_ppValue.
template <class T, class Base> class TpParameterBase : public Base
{
public:
    TpParameterBase() { this->m_pTypeInfo = &typeid(T); }

    /// Writes through the parameter reach *pValue; its present value becomes the default.
    void Bind(T* pValue)
    {
        m_pValue = pValue;
        m_ppValue = &m_pValue;
        m_Default = *pValue;
    }

    T ReadValue() const { return m_pObject != nullptr ? (m_pObject->*m_pfnGet)() : **m_ppValue; }

    void WriteValue(T value)
    {
        if (m_pObject != nullptr)
        {
            (m_pObject->*m_pfnSet)(value);
        }
        else
        {
            **m_ppValue = value;
        }
    }

    /// Copies the binding, too: the copy is bound to the same variable. pDest is of the same T.
    void CopyTo(ClParameterBase* pDest) override
    {
        Base::CopyTo(pDest);
        TpParameterBase* pCopy = SameType(pDest);
        pCopy->m_pObject = m_pObject;
        pCopy->m_pfnSet = m_pfnSet;
        pCopy->m_pfnGet = m_pfnGet;
        pCopy->m_pValue = m_pValue;
        pCopy->m_ppValue = m_ppValue == &m_pValue ? &pCopy->m_pValue : m_ppValue;
        pCopy->m_Default = m_Default;
    }

    ClParameterBase* Clone() override { return CloneAs<TpParameterBase>(this); }
    void CopyDefaultFrom(ClParameterBase* pOther) override { m_Default = SameType(pOther)->m_Default; }
    void CopyDefaultFromValue(ClParameterBase* pOther) override { m_Default = SameType(pOther)->ReadValue(); }

    void CopyValuesFrom(ClParameterBase* pOther, bool bPointers) override
    {
        if (bPointers || !this->IsPointer())
        {
            WriteValue(SameType(pOther)->ReadValue());
        }
    }

    void SetToDefault() override { WriteValue(m_Default); }
    void SetToDefaultFrom(ClParameterBase* pOther) override { WriteValue(SameType(pOther)->m_Default); }
    bool IsDefault() const override { return ReadValue() == m_Default; }

    void SwapDefaultAndValue() override
    {
        const T value = ReadValue();
        WriteValue(m_Default);
        m_Default = value;
    }

    void* GetParameterPtr() override { return m_ppValue != nullptr ? *m_ppValue : nullptr; }

    // Text needs a class that can convert a T.
    using Base::GetDefaultValue;
    using Base::GetValue;
    void SetValue(const char*) override { ThrowAbstract(__LINE__); }
    bool GetValue(char*, unsigned long&) override { ThrowAbstract(__LINE__); }
    bool GetDefaultValue(char*, unsigned long&) override { ThrowAbstract(__LINE__); }

    Base* m_pObject = nullptr;                        ///< if not null, the value lives behind its accessors
    void (Base::*m_pfnSet)(const T& value) = nullptr; ///< setter of m_pObject
    T (Base::*m_pfnGet)() = nullptr;                  ///< getter of m_pObject
    T** m_ppValue = nullptr;                          ///< normally the address of m_pValue
    T* m_pValue = nullptr;                            ///< the bound variable
    T m_Default = T();

protected:
    /// A new Class holding a copy of *pSource, owned by the caller.
    template <class Class> static Class* CloneAs(Class* pSource)
    {
        Class* pClone = ConvertBadAlloc([] { return new Class; });
        try
        {
            pSource->CopyTo(pClone);
        }
        catch (...)
        {
            delete pClone;
            throw;
        }
        return pClone;
    }

    // Trees that are copied are of identical shape and types; another type is the caller's error.
    static TpParameterBase* SameType(ClParameterBase* pOther) { return dynamic_cast<TpParameterBase*>(pOther); }

private:
    [[noreturn]] static void ThrowAbstract(long nLine)
    {
        throw ClException("Abstract function", FPC_ERROR_INTERNAL, true, "RDTools/Parameter.hpp", nLine);
    }
};

/// The level at which the typed parameters derive.
template <class T, class Base> class TpParameter : public TpParameterBase<T, Base>
{
public:
    ~TpParameter() override = default;
    ClParameterBase* Clone() override { return this->CloneAs(this); }
};

/// Copies szText into a caller's buffer by the text convention of ClParameter.
bool GiveText(const char* szText, char* szBuffer, unsigned long& nSize);

#include "RDTools/ParameterEnum.hpp"
#include "RDTools/ParameterNumeric.hpp"
#include "RDTools/ParameterString.hpp"
