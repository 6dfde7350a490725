# The nearest this host gets to the NDK for the device: clang, libc++, lld and
# 32-bit x86 (scripts/setup-deps --libcxx-i686). lld is told to refuse a
# version script that names a symbol the library does not define, as the
# NDK's current linkers do by default. Nothing built against libstdc++ can be
# linked in, so TinyXML and GoogleTest are compiled from source with this
# runtime (AKVO_TINYXML_SOURCE_DIR, AKVO_GTEST_SOURCE_DIR). Executables are
# position independent, as Android runs no other kind.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32 -stdlib=libc++")
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32 -stdlib=libc++ -fuse-ld=lld -pie")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32 -stdlib=libc++ -fuse-ld=lld -Wl,--no-undefined-version")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32 -stdlib=libc++ -fuse-ld=lld")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig")
