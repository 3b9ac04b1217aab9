#pragma once

#include <string>
#include <string_view>

namespace vtdirect::platform {

/// Gives a JSON text with the exponents of its numbers cut to nine digits that count, so that RapidJSON's
/// reader can be trusted with them: it adds an exponent to the number of digits of the fraction without a
/// look at overflow, and the sum then leads it out of a table. No number changes, since 1e-999999999 is as
/// zero as any below it, and a larger exponent of a number that can be read is out of reach of a text below a
/// hundred megabytes. What is no JSON stays so at the same place. Pure.
[[nodiscard]] std::string ShortenJsonExponents(std::string_view json);

}  // namespace vtdirect::platform
