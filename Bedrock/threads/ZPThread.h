// Thread objects.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPMutableDictionary);

/// The object of one thread, made when the thread first asks for it; also threads that were started
/// outside the library have one. It lives until the thread ends. Only its own thread may use it.
struct ZPThread : ZPObject {
    ZP_CLASS(ZPThread)
    unsigned long _cthread;
    ZPMutableDictionary *_threadDictionary;

    /// The calling thread's object.
    static ZPThread *currentThread() { return objc_msgSend<ZPThread *>(class_(), "currentThread"_sel); }
    /// A dictionary for the application's own use on this thread, made on first request.
    ZPMutableDictionary *threadDictionary() { return objc_msgSend<ZPMutableDictionary *>(this, "threadDictionary"_sel); }
};
