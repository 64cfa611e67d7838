#pragma once
// The list as components see it: fifteen operations in this order of slots, reference-counted.
//
// Part of the contract between separately built components: neither the order nor a signature changes. The
// library's CDSList (list.h) implements it, and tells what each operation does.

#include <kelmara/api.h>

inline constexpr GUID IID_IListInterface = {
    0x1BAD2E60, 0xC1B9, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

class KELMARA_API IListInterface {
  public:
    virtual long QueryInterface(GUID const &iid, void **out) = 0;
    virtual unsigned long AddRef() = 0;
    virtual unsigned long Release() = 0;
    virtual bool Add(void *data, long key) = 0;
    virtual void *AddVolatile(void *data, long size, long key) = 0;
    virtual bool Push(void *data, long key) = 0;
    virtual bool Insert(void *data, long index, long key) = 0;
    virtual void *Pop(long key) = 0;
    virtual void *Remove(void *data, long key) = 0;
    virtual void *RemoveAt(long index) = 0;
    virtual long Contains(void *data, long key) = 0;
    virtual bool AddCString(char *text, long key) = 0;
    virtual void Clear(long key) = 0;
    virtual void *GetEntry(long index, long key) = 0;
    virtual long Entries(long key) = 0;

  protected:
    ~IListInterface() = default;
};
