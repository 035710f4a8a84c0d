#ifndef COMMUNICATIONEXPORT_H
#define COMMUNICATIONEXPORT_H

// The link layer is a static library of its own and part of the shared library HXCommon. The build defines
// HXCOMMON_COMMUNICATION_STATIC_DEFINE for users of a static library, and HXCommonCommunication_EXPORTS where
// the shared one is compiled. (CMake writes no such header for a static library.)
#if defined(HXCOMMON_COMMUNICATION_STATIC_DEFINE)
#    define HXCOMMON_COMMUNICATION_EXPORT
#elif !defined(_WIN32)
#    define HXCOMMON_COMMUNICATION_EXPORT __attribute__((visibility("default")))
#elif defined(HXCommonCommunication_EXPORTS)
#    define HXCOMMON_COMMUNICATION_EXPORT __declspec(dllexport)
#else
#    define HXCOMMON_COMMUNICATION_EXPORT __declspec(dllimport)
#endif

#endif
