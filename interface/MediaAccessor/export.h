// The macro that marks what the shared library MediaAccessor exports; everything else is hidden.
#pragma once

#if defined(MEDIA_ACCESSOR_STATIC)
#define MEDIA_ACCESSOR_API
#elif defined(_WIN32)
#if defined(MEDIA_ACCESSOR_BUILD)
#define MEDIA_ACCESSOR_API __declspec(dllexport)
#else
#define MEDIA_ACCESSOR_API __declspec(dllimport)
#endif
#else
#define MEDIA_ACCESSOR_API __attribute__((visibility("default")))
#endif

// Marks what a plug-in module exports (plugin.h).
#if defined(_WIN32)
#define MEDIA_ACCESSOR_PLUGIN_API __declspec(dllexport)
#else
#define MEDIA_ACCESSOR_PLUGIN_API __attribute__((visibility("default")))
#endif
