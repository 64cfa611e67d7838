// kmlocation: the location component.

#include <reference_suite/components/location/location_component.h>

static constinit ComponentFactory<LocationComponent> factory;

constinit const ComponentClass component_class = {CLSID_LocationComponent, factory, "Kelmara location",
                                                  "Kelmara.Location", "Kelmara.Location.1"};
