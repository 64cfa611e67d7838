// A component: one class in a module. component_exports.cpp of the suite makes the module's five exports of
// it.
#include <docs/examples/modules/counter.h>
#include <reference_suite/components/component_object.h>

namespace {

class Counter final : public ComponentObject<Offer<ICounter, IID_ICounter>> {
  public:
    long Next() override { return ++number_; }

  private:
    long number_ = 0;
};

constinit ComponentFactory<Counter> factory;

} // namespace

constinit const ComponentClass component_class = {CLSID_Counter, factory, "A counter", "Example.Counter",
                                                  "Example.Counter.1"};
