#pragma once

// A parameter list for the tests of the parameter interface.

#include "RDTools/ParameterInterface.hpp"

#include <gtest/gtest.h>

#include <cstring>

using Interface = ClParameterInterface;
using Parameter = ClParameterInterface::ClParameter;

enum EColour : int
{
    eRed = 3,
    eGreen = 5
};

/// A list with one parameter of each kind, and the variables it describes.
struct StAllKinds
{
    StAllKinds()
    {
        c.AddComment("everything");
        c.AddParameter(&nByte, "Byte", "a byte", Interface::eIn);
        c.AddParameter(&nAngle, "Angle", "an angle", Interface::eIn);
        c.AddParameter(&nInt, "Int", "an int", Interface::eIn);
        c.AddParameter(&nLong, "Long", "a long", Interface::eIn, -5.0, 5.0);
        c.AddParameter(&fFloat, "Float", "a float", Interface::eIn);
        c.AddParameter(&dDouble, "Double", "a double", Interface::eIn);
        c.AddParameter(&bSwitch, "Switch", "a switch", Interface::eIn);
        c.AddParameter(&eColour, "Colour", "a colour", Interface::eIn);
        c.AddParameter(&pImage, "Image", "an image", Interface::eOut);
        c.AddParameter(&pGraph, "Graph", "a graph", Interface::eOptional);
    }

    Parameter& operator[](const char* szName)
    {
        for (Parameter* p = c.FirstParam(); p != nullptr; p = p->m_pNext)
        {
            if (std::strcmp(p->GetName(), szName) == 0)
            {
                return *p;
            }
        }
        ADD_FAILURE() << szName;
        return *c.FirstParam();
    }

    unsigned char nByte = 200;
    unsigned short nAngle = 16384;
    int nInt = -7;
    int nBehindInt = 0x55555555;
    long nLong = -5000000000;
    float fFloat = 1.5f;
    double dDouble = -0.1;
    bool bSwitch = true;
    EColour eColour = eGreen;
    ClImage* pImage = nullptr;
    ClGraph* pGraph = nullptr;
    Interface c;
};
