#pragma once
// Objects of components that are stored: IComponentStorageInterface for all of them, and
// IComponentValuesInterface for those with options. Further interfaces follow as offers.

#include <reference_suite/components/component_object.h>
#include <reference_suite/components/stored_component.h>

#include <kelmara/connectivity/component_interfaces.h>

template <long Kind, class... Others>
class StorageObject
    : public ComponentObject<Offer<IComponentStorageInterface, IID_IComponentStorageInterface>, Others...> {
  public:
    long Open_Component(ComponentLocator *locator, long) override {
        if (!locator) return E_INVALIDARG;
        return Within_Memory_Of_Suite([&] { return m_Component.Open(*locator); });
    }
    long Set_Edit_Lock(long on, long) override {
        return Within_Memory_Of_Suite([&] { return m_Component.Set_Lock(on != 0); });
    }
    long Commit_Component() override {
        return Within_Memory_Of_Suite([&] { return m_Component.Commit(); });
    }
    long Run_Component_Command(long, char *, char *, long, long) override { return E_NOTIMPL; }

  protected:
    StoredComponent m_Component{Kind};
};

template <long Kind, class... Others>
class ValuesObject
    : public StorageObject<Kind, Offer<IComponentValuesInterface, IID_IComponentValuesInterface>, Others...> {
  public:
    long Set_Value(unsigned long code, char *data, long length) override {
        return Within_Memory_Of_Suite([&] { return this->m_Component.Set(code, data, length); });
    }
    long Get_Value(unsigned long code, char *buffer, long size) override {
        return Within_Memory_Of_Suite([&] { return this->m_Component.Get(code, buffer, &size); });
    }
};
