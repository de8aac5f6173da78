#include "base/start_thread.h"

#include "base/end_process.h"

pthread_t startThread(const char* purpose, std::size_t stackBytes, void* (*body)(void*), void* argument) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackBytes);
    pthread_t thread;
    const int error = pthread_create(&thread, &attributes, body, argument);
    pthread_attr_destroy(&attributes);
    if (error != 0) endForRefusal(purpose, error);
    return thread;
}
