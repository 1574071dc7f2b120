#pragma once

#include "ByteSource.hpp"

#include "RDTools/FpImage.hpp"

/// One of the eight sample types.
unsigned char AnyType(unsigned nNumber);
/// A grey value as a rule, also fractions, numbers of any size, and none.
double Real(ClByteSource& cBytes);
/// Mostly from nLow to nHigh, sometimes anything.
long Mostly(int nLow, int nHigh, ClByteSource& cBytes);
int MostlyInt(int nLow, int nHigh, ClByteSource& cBytes);
/// One of the first nValues values of an enumeration, or the number behind them.
template <class T> T Choice(int nValues, ClByteSource& cBytes)
{
    return static_cast<T>(cBytes.Byte() % (nValues + 1));
}

/// A small image of a type, filled as the bytes say.
void Make(ClImage& cImage, unsigned char eType, int nPlanes, ClByteSource& cBytes);
/// Any image; most often the one that an operator of 8-bit samples wants.
void MakeAny(ClImage& cImage, ClByteSource& cBytes);
/// All types alike, one plane as often as another number of them.
void MakeTyped(ClImage& cImage, ClByteSource& cBytes);
/// Nearly always one plane of bytes.
void MakeByte(ClImage& cImage, ClByteSource& cBytes);
/// Of the size of another image, as a rule.
void MakeLike(ClImage& cImage, const ClImage& cModel, unsigned char eType, ClByteSource& cBytes);
/// An image that an output held before, which it is to replace.
void MakeFormer(ClImage& cImage, ClByteSource& cBytes);
