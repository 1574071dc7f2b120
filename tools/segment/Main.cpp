#include "Program.hpp"

int main(int nArguments, char** aszArguments)
{
    return SegmentTool::RunProgram(nArguments, aszArguments);
}
