#pragma once

#include "RDTools/Parameter.hpp"
#include "RDTools/ParameterProvider.hpp"
#include "RDTools/TpArrayDynamic.hpp"

#include <memory>

/// A node of the parameter tree. It owns its children, in the order of adding, and finds one by a dotted path without
/// regard to case. Operations on values apply to all children; operations with another container pair the children by
/// position.
class ClParameterContainer : public ClParameter
{
public:
    ClParameterContainer();
    explicit ClParameterContainer(const char* szName);
    ~ClParameterContainer() override;

    ClParameterContainer* GetContainerInterface() override;
    ClParameter* GetParameterInterface() override;
    bool IsContainer() const override;
    bool IsDefault() const override; ///< all children are default; true if there are none

    ClParameterBase* Clone() override;
    void CopyTo(ClParameterBase* pDest) override;
    void CopyDefaultFrom(ClParameterBase* pOther) override;
    void CopyDefaultFromValue(ClParameterBase* pOther) override;
    void CopyValuesFrom(ClParameterBase* pOther, bool bPointers) override;
    void SetToDefault() override;
    void SetToDefaultFrom(ClParameterBase* pOther) override;
    void SwapDefaultAndValue() override;

    using ClParameter::GetDefaultValue;
    using ClParameter::GetValue;
    void SetValue(const char* szValue) override; ///< does nothing
    bool GetValue(char* szBuffer, unsigned long& nSize) override;
    bool GetDefaultValue(char* szBuffer, unsigned long& nSize) override;
    void* GetParameterPtr() override;

    /// Clones every child into pDest. Errors: pDest is no container -701; a name that pDest has -46.
    void CloneDataTo(ClParameterBase* pDest);

    ClParameter* FindLocal(const char* szName) const; ///< direct child, or null
    /// The parameter of a path, or null. "." is the root, a path with a leading point starts there, and a path may
    /// start with the root's own name (there case counts). What follows the name of a plain parameter is ignored.
    /// Errors: a part of exactly 255 characters -101; a longer one is cut to 255.
    ClParameter* Find(const char* szPath);
    ClParameter* FindNamePart(ClParameter* pPart, const char* szRest);
    /// Copies up to nMax characters of the path, to its first point or end; szPart has room for nMax + 1. Returns the
    /// position reached in szPath.
    static const char* CopyNamePathPart(const char* szPath, char* szPart, unsigned long nMax);

    // Iteration over the plain parameters of the whole tree, depth first; containers are never returned.
    ClParameter* GetFirstParameter();
    ClParameter* GetNextParameter(unsigned long nIndex);
    ClParameter* GetNextParameter(ClParameter* pLast);

    void Clear(); ///< deletes the children, the last one first

    // Adding. Errors: a name that is there already ClExVelmarin -46, the new parameter is deleted, the tree unchanged.
    ClParameterContainer* AddContainer(const char* szName);
    void AddParameter(const char* szName, ClParameter* pParameter); ///< takes ownership
    template <class T> TpParameterNumeric<T, ClParameter>* AddNumeric(const char* szName, T* pValue)
    {
        return AddParam<TpParameterNumeric<T, ClParameter>>(szName, pValue);
    }
    template <class T> TpParameterEnumPointer<T*, ClParameter>* AddPointer(const char* szName, T** ppValue)
    {
        auto* pParameter = AddParam<TpParameterEnumPointer<T*, ClParameter>>(szName, ppValue);
        pParameter->m_bPointer = true;
        return pParameter;
    }
    /// Creates a parameter of class Parameter, adds it and binds it to *pValue, whose value becomes the default.
    template <class Parameter, class T> Parameter* AddParam(const char* szName, T* pValue)
    {
        Parameter* pParameter = ConvertBadAlloc([] { return new Parameter; });
        AddParameter(szName, pParameter);
        pParameter->Bind(pValue);
        return pParameter;
    }

    TpArrayDynamic<ClParameter*, 10> m_aChildren; ///< owned

private:
    template <class Fn> void ForEachPair(ClParameterBase* pOther, Fn&& fn);
    ClParameterContainer* CastOrThrow(ClParameterBase* pOther, long nLine) const;
};
