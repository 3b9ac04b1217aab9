#include "connection/json_grammar.h"

// The few functions that the parser has beside its templates. Boost.JSON keeps them in files that one source
// file of a program includes.
#define json vtdirect_json
#include <boost/json/detail/impl/default_resource.ipp>
#include <boost/json/detail/impl/shared_resource.ipp>
#include <boost/json/detail/impl/stack.ipp>
#include <boost/json/impl/error.ipp>
#undef json
