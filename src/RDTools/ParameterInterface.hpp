#pragma once

#include "RDTools/Parameter.hpp"

#include <cstddef>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

class ClGraph;
class ClImage;
class ClStream;

/// A second description of a processor, for a tool that wires processors together: its inputs, outputs and settings in
/// a list, with type, direction, range and present value, which can be shown as text and kept in a stream. The
/// variables described belong to the processor and outlive the description.
/// Stream  the records of all parameters, one behind the other, without count or header: the reader has a list of the
///         same names. Texts and numbers stand as in ClStream, see ClParameter::WriteToStream.
class ClParameterInterface
{
public:
    enum EType : int
    {
        eByte = 0,  ///< unsigned 8-bit
        eShort = 1, ///< 16-bit
        eAngle = 2, ///< unsigned 16-bit, a full circle is 65536
        eLong = 3,  ///< long
        eDouble = 4,
        eFloat = 5,
        eVoid = 6,        ///< no value
        eImage = 7,       ///< ClImage*
        eBool = 8,        ///< unsigned 8-bit
        eEnum = 9,        ///< long
        eText = 11,       ///< characters with a terminator
        eGraph = 12,      ///< ClGraph*
        eCommentLine = 13 ///< no value; the name is the comment
    };

    enum EDirection : int
    {
        eIn = 0,
        eOut = 1,
        eInOut = 2,
        eOptional = 3
    };

    /// One input, output or setting.
    class ClParameter
    {
    public:
        ClParameter() = default;
        ClParameter(const ClParameter&) = delete;
        ClParameter& operator=(const ClParameter&) = delete;
        virtual ~ClParameter();

        /// The record: name (ClStream::WriteString), direction, no-range (a byte each), lower bound, upper bound,
        /// default (8 bytes each), m_bFlag1, m_bIndirect, type (a byte each), then the value: 1 byte for eByte, 2 for
        /// eShort and eAngle, 4 for eLong (its low half) and eFloat, 8 for eDouble, none for all other types.
        virtual void WriteToStream(ClStream& cStream);
        /// Reads a record. Direction, no-range and type of the record are dropped. An eShort takes 4 bytes, not 2: a
        /// stream that holds one is read out of step by the difference. Where the stream ends early without raising,
        /// the fields behind keep their values. Returns 0, or -33 if the record has another name; nothing behind the
        /// name is read then.
        virtual long ReadFromStream(ClStream& cStream);

        const char* GetName() const { return m_szName; }
        void SetName(const char* szName); ///< stores a copy
        const char* GetDescription() const { return m_szDescription; }
        void SetDescription(const char* szDescription); ///< stores a copy
        const char* GetEnumList() const { return m_szEnumList; }
        /// Stores copies. szList: texts, each with its terminator, ended by an empty one; pnValues: one value for each,
        /// or null for 0, 1, 2 and so on. A null list removes both. Errors: ClExBadAlloc, nothing is changed.
        void SetEnumList(const char* szList, const long* pnValues);
        /// The same from a table of names. Errors: the same.
        template <std::size_t nCount> void SetEnumList(const StEnumName (&aNames)[nCount])
        {
            SetEnumNames(aNames, nCount);
        }

        void SetRange(double dLower, double dUpper); ///< equal bounds (or not a number) set m_bNoRange, others keep it
        bool RangeDefined() const { return m_dLower < m_dUpper || m_dLower > m_dUpper; }
        bool IsFloat() const { return m_eType == eDouble || m_eType == eFloat; }

        const char* szType() const; ///< "eLong"; types without a word of their own "Unknown"
        const char* szDir() const;  ///< "eInOut"; other values "Unknown"

        /// Stores a number by the type: truncated to the low bits of an integer, 1 for any eBool but 0. Types that are
        /// no number store nothing. pTarget: of the type told at EType. Errors: null -701.
        void SetValue(void* pTarget, double dValue);
        void SetValue(double dValue); ///< the same to *m_pValue, unless m_bIndirect
        // The variable that holds the pointer. Errors: a parameter of another type -44; without variable -701.
        void SetValue(ClImage* pImage);
        void SetValue(ClImage& cImage) { SetValue(&cImage); }
        void SetValue(ClGraph* pGraph);
        ClImage* GetImage() const; ///< null for a parameter of another type or without variable
        ClGraph* GetGraph() const;

        /// The value as text: "5", "1.50000", "Image", an angle as "32768=180.000" and the degree sign (0xB0), an
        /// enumerated value by its name. The text stands in a buffer of the calling thread until the next call there,
        /// whatever the parameter; it is cut to 255 characters.
        const char* szValue() const { return GetszValue(m_pValue); }
        const char* GetszValue(const void* pValue) const; ///< the same of another variable, of the type told at EType
        /// Writes the name of a value, cut to nSize - 1 characters, and returns szBuffer. Without own values it is the
        /// name at index nValue of the list, otherwise the one where the value stands; "Unknown" if there is none.
        const char* EnumToStr(long nValue, const char* szList, char* szBuffer, long nSize) const;

        EType m_eType = eVoid;
        EDirection m_eDirection = eInOut;
        int m_bNoRange = 0; ///< a truth value
        double m_dLower = 0.0;
        double m_dUpper = 0.0;
        double m_dDefault = 0.0;
        void* m_pValue = nullptr;        ///< the bound variable, not owned
        char* m_szEnumList = nullptr;    ///< owned
        long* m_pnEnumValues = nullptr;  ///< owned, as many as the list has names
        bool m_bFlag1 = false;           ///< travels with the stream, and nothing else
        bool m_bIndirect = false;        ///< SetValue(double) leaves *m_pValue alone
        char* m_szName = nullptr;        ///< owned
        char* m_szDescription = nullptr; ///< owned
        ClParameter* m_pNext = nullptr;  ///< owned by the list
        int m_nLongBytes = sizeof(long); ///< of *m_pValue, where m_eType says long: 4 for an int or its like

    private:
        void SetEnumNames(const StEnumName* pNames, std::size_t nCount);
        void ReadValue(ClStream& cStream);
        long LoadInteger(const void* pValue) const;
        void StoreInteger(void* pTarget, long nValue) const;
        bool HoldsInt(const void* pVariable) const;
    };

    ClParameterInterface() = default;
    ClParameterInterface(const ClParameterInterface&) = delete;
    ClParameterInterface& operator=(const ClParameterInterface&) = delete;
    virtual ~ClParameterInterface();

    virtual void WriteToStream(ClStream& cStream);
    /// Errors: a record of another name ClExVelmarin -33; the parameters before it are read.
    virtual void ReadFromStream(ClStream& cStream);

    // Adding to the end. All give the new parameter, owned by the list. Errors: ClExBadAlloc, the list is unchanged.
    ClParameter* AddParameter();
    /// The general form; no range bounds. eType: a value of EType, ppValue the variable told there.
    ClParameter* AddParameter(void** ppValue, const char* szName, const char* szDescription, EDirection eDirection,
                              long eType, long bNoRange);
    ClParameter* AddParameter(ClImage** ppImage, const char* szName, const char* szDescription, EDirection eDirection,
                              double dLower = 0.0, double dUpper = 0.0);
    ClParameter* AddParameter(ClGraph** ppGraph, const char* szName, const char* szDescription, EDirection eDirection,
                              double dLower = 0.0, double dUpper = 0.0);
    /// A number, a truth value or an enumeration, whose present value becomes the default. The range is cut to the
    /// limits of T; see ProcessRanges for the one that stands here. Errors moreover: null -701.
    template <class T, class = std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>>>
    ClParameter* AddParameter(T* pValue, const char* szName, const char* szDescription, EDirection eDirection,
                              double dLower = 1.0, double dUpper = -1.0)
    {
        return Append(MakeNumber(pValue, NumberOf(pValue), szName, szDescription, eDirection, dLower, dUpper));
    }
    /// The same without a range, for a value that is chosen by name.
    template <class T, std::size_t nCount>
    ClParameter* AddChoice(T* pValue, const char* szName, const char* szDescription, EDirection eDirection,
                           const StEnumName (&aNames)[nCount])
    {
        auto pParameter = MakeNumber(pValue, NumberOf(pValue), szName, szDescription, eDirection, 0.0, 0.0);
        pParameter->SetEnumList(aNames);
        return Append(std::move(pParameter));
    }
    ClParameter* AddComment(const char* szText);

    /// The pair 1.0 and -1.0 means that no range is given: two thirds and four thirds of the value take its place, the
    /// smaller one first. Any other pair stays.
    static void ProcessRanges(double dValue, double& dLower, double& dUpper);

    ClParameter* GetParameter(long nIndex) const; ///< null outside of the list
    ClParameter* FirstParam() const { return m_pFirst; }
    long Count() const { return m_nCount; }
    void Clear();

    ClParameter* m_pFirst = nullptr; ///< owned, linked by m_pNext
    long m_nCount = 0;

private:
    template <class T, bool bEnum = std::is_enum_v<T>> struct TpNumberOf
    {
        using Type = T;
    };
    template <class T> struct TpNumberOf<T, true>
    {
        using Type = std::underlying_type_t<T>;
    };

    /// How a variable of type T is described.
    template <class T> static constexpr EType TypeOf()
    {
        constexpr bool bInt = std::is_same_v<T, int> || std::is_same_v<T, long>;
        static_assert(!std::is_enum_v<T> || std::is_same_v<typename TpNumberOf<T>::Type, int> ||
                          std::is_same_v<typename TpNumberOf<T>::Type, long>,
                      "an enumeration is stored as an int or a long");
        static_assert(bInt || std::is_enum_v<T> || std::is_same_v<T, float> || std::is_same_v<T, double> ||
                          std::is_same_v<T, bool> || std::is_same_v<T, unsigned char> || std::is_same_v<T, short> ||
                          std::is_same_v<T, unsigned short>,
                      "no type of a description stores this");
        return std::is_enum_v<T>                  ? eEnum
               : bInt                             ? eLong
               : std::is_same_v<T, bool>          ? eBool
               : std::is_same_v<T, unsigned char> ? eByte
               : std::is_same_v<T, short>         ? eShort
               : std::is_same_v<T, float>         ? eFloat
               : std::is_same_v<T, double>        ? eDouble
                                                  : eAngle;
    }

    struct StNumber
    {
        EType eType;
        std::size_t nBytes;
        double dValue;
        double dLowest; ///< limits of the type
        double dHighest;
    };

    template <class T> static StNumber NumberOf(const T* pValue)
    {
        using Number = typename TpNumberOf<T>::Type;
        CheckVariable(pValue);
        return {TypeOf<T>(), sizeof(T), static_cast<double>(*pValue),
                static_cast<double>(std::numeric_limits<Number>::lowest()),
                static_cast<double>(std::numeric_limits<Number>::max())};
    }

    static void CheckVariable(const void* pValue);
    // Parameters outside of the list, so that one that fails leaves it alone.
    static std::unique_ptr<ClParameter> Make(void* pValue, const char* szName, const char* szDescription,
                                             EDirection eDirection, EType eType);
    static std::unique_ptr<ClParameter> MakeNumber(void* pValue, const StNumber& cNumber, const char* szName,
                                                   const char* szDescription, EDirection eDirection, double dLower,
                                                   double dUpper);
    ClParameter* AddPointer(void* ppValue, const char* szName, const char* szDescription, EDirection eDirection,
                            EType eType, double dLower, double dUpper);
    ClParameter* Append(std::unique_ptr<ClParameter> pParameter);
};
