#include "KormelinSegmentation.hpp"

const int ClKormelinSegmentation::m_nMainVersionNumber = 1;
const int ClKormelinSegmentation::m_nInterfaceVersionNumber = 1;
const int ClKormelinSegmentation::m_nRelease = 1407;
const int ClKormelinSegmentation::m_nBugfixVersionNumber = 3;
const char ClKormelinSegmentation::m_szVersion[] = "1.1.1407.3";
const char ClKormelinSegmentation::m_szLongVersion[] =
    "SDK: VelmarinKormelinSegmentation Version: 1.1.1407.3 Copyright Velmarin";

void ClKormelinSegmentation::OnInitialize() {}

void ClKormelinSegmentation::OnUninitialize() {}
