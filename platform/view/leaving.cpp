#include <platform/machine.h>

#include <platform/kernel/named_objects.h>
#include <platform/kernel/outcome.h>
#include <platform/registry/store.h>
#include <platform/user/shared_windows.h>

extern "C" void Leave_Machine() {
    Code_Of([] {
        NamedObjects::Let_Names_Go();
        Let_Shared_Windows_Go();
        RegistryStore::Of_This_Process().Let_Go();
        return NO_ERROR;
    });
}
