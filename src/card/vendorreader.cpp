// The ACR120U vendor library, bound at run time so that the component loads and reports "no
// reader" on a till where the DLL is missing. Windows only.
#ifdef _WIN32

#include "card/reader.h"

#include <windows.h>

namespace pondar::card {

namespace {

using OpenFn = int16(__stdcall*)(int16 port);
using CloseFn = int16(__stdcall*)(int16 handle);
using SelectFn = int16(__stdcall*)(int16 handle, uint8* tagType, uint8* serialLength,
                                   uint8* serial);
using LoginFn = int16(__stdcall*)(int16 handle, uint8 sector, uint8 keyType, uint8 storedNo,
                                  uint8* key);
using ReadFn = int16(__stdcall*)(int16 handle, uint8 block, uint8* data);
using WriteFn = int16(__stdcall*)(int16 handle, uint8 block, uint8* data);

class VendorReader final : public ReaderLibrary {
public:
    VendorReader() {
        m_dll = LoadLibraryW(L"ACR120U.DLL");
        if (!m_dll)
            return;
        bind(m_open, "ACR120_Open");
        bind(m_close, "ACR120_Close");
        bind(m_select, "ACR120_Select");
        bind(m_login, "ACR120_Login");
        bind(m_read, "ACR120_Read");
        bind(m_write, "ACR120_Write");
    }
    ~VendorReader() override {
        if (m_dll)
            FreeLibrary(m_dll);
    }
    VendorReader(const VendorReader&) = delete;
    VendorReader& operator=(const VendorReader&) = delete;

    int16 Open(int16 port) override { return m_open ? m_open(port) : status::InternalError; }
    int16 Close(int16 handle) override { return m_close ? m_close(handle) : status::InternalError; }
    int16 Select(int16 handle, uint8& tagType, uint8& serialLength, uint8 serial[10]) override {
        return m_select ? m_select(handle, &tagType, &serialLength, serial) : status::InternalError;
    }
    int16 Login(int16 handle, uint8 sector, uint8 keyType, uint8 storedNo,
                const uint8 key[6]) override {
        if (!m_login)
            return status::InternalError;
        uint8 copy[6];
        for (int i = 0; i < 6; ++i)
            copy[i] = key[i];
        return m_login(handle, sector, keyType, storedNo, copy);
    }
    int16 Read(int16 handle, uint8 block, uint8 data[16]) override {
        return m_read ? m_read(handle, block, data) : status::InternalError;
    }
    int16 Write(int16 handle, uint8 block, const uint8 data[16]) override {
        if (!m_write)
            return status::InternalError;
        uint8 copy[16];
        for (int i = 0; i < 16; ++i)
            copy[i] = data[i];
        return m_write(handle, block, copy);
    }

private:
    template <typename Fn> void bind(Fn& fn, const char* name) {
        fn = reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(m_dll, name)));
    }

    HMODULE m_dll = nullptr;
    OpenFn m_open = nullptr;
    CloseFn m_close = nullptr;
    SelectFn m_select = nullptr;
    LoginFn m_login = nullptr;
    ReadFn m_read = nullptr;
    WriteFn m_write = nullptr;
};

} // namespace

std::shared_ptr<ReaderLibrary> makeVendorReader() {
    return std::make_shared<VendorReader>();
}

} // namespace pondar::card

#endif
