#pragma once

// What the shared library shows to programs; everything else stays hidden.
#if defined(_WIN32)
#if defined(SURVEYMSG_BUILDS)
#define SURVEYMSG_API __declspec(dllexport)
#else
#define SURVEYMSG_API __declspec(dllimport)
#endif
#else
#define SURVEYMSG_API __attribute__((visibility("default")))
#endif
