# Reads targets.txt, then lines "operation peer number". Prints a row for each operation, then a row for each
# target with what was reached.
/^#/ || NF == 0 { next }
FNR == NR { ++targets; row[targets] = $1; yardstick[targets] = $2; most[targets] = $3; next }
{
    if (!($1 in seen)) { seen[$1] = 1; operation[++operations] = $1 }
    number[$1, $2] = $3
}
function show(value) { return value == "" ? "" : sprintf(value < 100 ? "%.1f" : "%.0f", value) }
function ratio(a, b) { return a == "" || b == "" || b == 0 ? "" : sprintf("%.2f", a / b) }
END {
    layout = "%-30s %10s %10s %10s %10s %10s %8s %8s %9s %8s\n"
    printf layout, "operation", "surveymsg", "hand", "floor", "protobuf", "plain", "/hand", "/floor", "/protobuf",
        "/plain"
    for (i = 1; i <= operations; ++i) {
        o = operation[i]
        own = number[o, "surveymsg"]
        printf layout, o, show(own), show(number[o, "hand"]), show(number[o, "floor"]), show(number[o, "protobuf"]),
            show(number[o, "plain"]), ratio(own, number[o, "hand"]), ratio(own, number[o, "floor"]),
            ratio(own, number[o, "protobuf"]), ratio(own, number[o, "plain"])
    }
    print ""
    for (i = 1; i <= targets; ++i) {
        own = number[row[i], "surveymsg"]
        other = yardstick[i] ~ /\// ? number[yardstick[i], "surveymsg"] : number[row[i], yardstick[i]]
        reached = ratio(own, other)
        if (reached == "") continue
        printf "%-30s %-26s at most %5.2f, is %5.2f  %s\n", row[i], yardstick[i], most[i], reached,
            (reached + 0 <= most[i] + 0 ? "reached" : sprintf("%.2f times too much", reached / most[i]))
    }
}
