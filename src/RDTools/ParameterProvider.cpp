#include "RDTools/ParameterProvider.hpp"

#include "RDTools/ParameterContainer.hpp"

ClParameterProvider::~ClParameterProvider() = default;

void ClParameterProvider::QueryParameters(ClParameterInterface&) {}

void ClParameterProvider::SetParametersToDefault() {}

void ClParameterProvider::PublishParameters(ClParameterContainer&) {}

void ClParameterProvider::QueryParameters(ClParameterContainer& cContainer)
{
    PublishParameters(cContainer);
    cContainer.SwapDefaultAndValue();
    SetParametersToDefault();
    cContainer.SwapDefaultAndValue();
}

void ClParameterProvider::PublishParamSubContainer(ClParameterContainer& cContainer, const char* szName)
{
    PublishParameters(szName == nullptr ? cContainer : *cContainer.AddContainer(szName));
}

void ClParameterProvider::CopyParametersTo(ClParameterProvider& cDest)
{
    ClParameterContainer cSourceTree;
    ClParameterContainer cDestTree;
    QueryParameters(cSourceTree);
    cDest.QueryParameters(cDestTree);
    cDestTree.CopyValuesFrom(&cSourceTree, false);
}
