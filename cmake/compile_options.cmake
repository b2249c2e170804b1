# What every target of this project is compiled with.
function(kalvobase_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wundef
    $<$<BOOL:${KALVOBASE_WERROR}>:-Werror>)
  if(KALVOBASE_FUZZ)  # so that a fuzz target sees which way its input takes
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(KALVOBASE_SANITIZE)
    set(flags -fsanitize=${KALVOBASE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(${target} PRIVATE ${flags})
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "OBJECT_LIBRARY")
      target_link_options(${target} PRIVATE ${flags})
    endif()
  endif()
endfunction()
