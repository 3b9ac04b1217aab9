#pragma once

/// Marks what a host may link against. Everything else stays inside the libraries.
#ifndef VTDIRECT_API
#define VTDIRECT_API __attribute__((visibility("default")))
#endif
