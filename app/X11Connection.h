#pragma once

struct xcb_connection_t;

namespace tavrel {

/// The toolkit's connection to an X server, which stays its own; null where it has none. Main
/// thread only.
xcb_connection_t* x11Connection();

}  // namespace tavrel
