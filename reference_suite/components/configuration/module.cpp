// kmconfiguration: the configuration component.

#include <reference_suite/components/configuration/configuration_component.h>

static constinit ComponentFactory<ConfigurationComponent> factory;

constinit const ComponentClass component_class = {CLSID_ConfigurationComponent, factory,
                                                  "Kelmara configuration", "Kelmara.Configuration",
                                                  "Kelmara.Configuration.1"};
