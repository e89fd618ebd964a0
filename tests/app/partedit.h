#pragma once

namespace quillet::guitest {

// Changes one member of a settings part's value, as its control does.
template <class Part, class Change> void edit(Part& part, Change change) {
    auto value = part.value();
    change(value);
    part.edit(value);
}

} // namespace quillet::guitest
