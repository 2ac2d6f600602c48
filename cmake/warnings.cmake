# passband_warnings carries the warnings of every target of this project. They are errors in the presets only, so that
# a new compiler never stops somebody who merely builds the library.
add_library(passband_warnings INTERFACE)
target_compile_options(passband_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                                  $<$<BOOL:${PASSBAND_WERROR}>:-Werror>)
