// SPDX-License-Identifier: MIT
// Classes and categories of a library that was opened work after it has been closed. usage: plugin_host LIBRARY
#include <Bedrock/core/ZPObject.h>

#include <cstdio>
#include <dlfcn.h>

int main(int, char **argv) {
    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) return std::fprintf(stderr, "%s\n", dlerror()), 1;
    dlclose(library);
    Class cls = objc_getClass("PluggedIn");
    if (!cls) return std::fputs("the class is not there\n", stderr), 1;
    ZPObject *object = objc_msgSend<ZPObject *>(cls, "new"_sel);
    bool right =
        objc_msgSend<int>(object, "answer"_sel) == 42 && objc_msgSend<unsigned>(object, "taughtByPlugin"_sel) == 1;
    object->release();
    if (!right) std::fputs("the methods answer something else\n", stderr);
    return !right;
}
