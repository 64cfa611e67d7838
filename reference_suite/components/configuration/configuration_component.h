#pragma once
// The object of the configuration component's class: the options of one connection configuration.

#include <reference_suite/components/storage_objects.h>

class ConfigurationComponent final
    : public ValuesObject<Component_Configuration,
                          Offer<IConfigSimpleAccessInterface, IID_IConfigSimpleAccessInterface>> {
  public:
    long Open_By_Name(char *name) override {
        if (!name) return E_INVALIDARG;
        return Within_Memory_Of_Suite([&] { return m_Component.Open(name); });
    }
    /// As StoredComponent::Get.
    long Read_Setting(unsigned long code, char *buffer, long *size) override {
        return Within_Memory_Of_Suite([&] { return m_Component.Get(code, buffer, size); });
    }
};
