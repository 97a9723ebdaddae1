#pragma once

// Marks a host interface whose identity (vtable, type info) the host library exports, so that
// the host and its plug-ins agree on it whatever visibility a plug-in is built with.
#define ZAVO_HOST_EXPORT __attribute__((visibility("default")))
