# quilo_lint_header_filter(OUT TOP): the regular expression of the headers that clang-tidy checks,
# those of the product's rooms below TOP. It begins with TOP, so that a checkout in a folder named
# "src" or "host" gives the same result as any other; .clang-tidy cannot say where that is.
function(quilo_lint_header_filter out top)
    string(REGEX REPLACE "([][+.*()^$?{}|\\\\])" "\\\\\\1" top "${top}")
    set(${out} "^${top}/(libvelkdsp|libquilo|libsdif|src|host)/.*\\.h$" PARENT_SCOPE)
endfunction()
