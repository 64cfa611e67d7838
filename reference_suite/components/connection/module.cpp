// kmconnection: the connection component.

#include <reference_suite/components/connection/connection_component.h>
#include <reference_suite/components/connection/kept_connection.h>

static constinit ComponentFactory<ConnectionComponent> factory;

constinit const ComponentClass component_class = {CLSID_ConnectionComponent, factory,
                                                  "Kelmara connection",      "Kelmara.Connection",
                                                  "Kelmara.Connection.1",    [] { Reap_Connections(0); }};
