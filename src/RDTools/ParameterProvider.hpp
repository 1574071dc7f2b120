#pragma once

class ClParameterContainer;
class ClParameterInterface;

/// Anything that can fill a tree with parameters that are bound to its own members.
class ClParameterProvider
{
public:
    virtual ~ClParameterProvider();

    /// Describes the provider for a tool that wires processors together.
    virtual void QueryParameters(ClParameterInterface& cInterface);
    /// Sets every published member to its true default, and does nothing else.
    virtual void SetParametersToDefault();
    /// Adds a bound parameter for each member.
    virtual void PublishParameters(ClParameterContainer& cContainer);

    /// Publishes and finds out the true defaults: afterwards the members hold the values they had, and each parameter
    /// knows its default, without a second table of defaults anywhere.
    void QueryParameters(ClParameterContainer& cContainer);
    /// Publishes into a sub-container of that name, or into cContainer itself if szName is null.
    void PublishParamSubContainer(ClParameterContainer& cContainer, const char* szName);
    /// Copies all values but pointers into a provider of the same class.
    void CopyParametersTo(ClParameterProvider& cDest);

protected:
    ClParameterProvider() = default;
};
