#pragma once
// The suite server's interfaces as a client has them. When the server cannot be reached, or what it answers
// makes no sense, a locator is cleared and a setting an empty text of size 1.

#include <reference_suite/components/marshalling/proxies.h>

#include <kelmara/connectivity/component_interfaces.h>

class ServerFace final : public ProxyFace<IServerInterface> {
  public:
    long Find_Component(long kind, char *name, ComponentLocator *out) override;
};

class ServerSettingsFace final : public ProxyFace<IServerSimpleAccessInterface> {
  public:
    long Read_Setting(unsigned long code, char *buffer, long *size) override;
    long Write_Setting(unsigned long code, char *text, long size) override;
    long Update_Setting(unsigned long code, char *text, long size, long zero) override;
};
