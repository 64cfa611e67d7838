#pragma once
// The object of the connection component's class.

#include <reference_suite/components/component_object.h>

#include <kelmara/connectivity/component_interfaces.h>

class ConnectionComponent final
    : public ComponentObject<Offer<IComplexValueFactoryInterface, IID_IComplexValueFactoryInterface>> {
  public:
    /// An empty tree, which may outlive this object.
    long Create_Tree(IComplexValueInterface **out) override;
};
