# Completion of vek's words. A line: words, "|", and what stands behind them: "@" an interface, "-" something
# that only the user knows, "a/b" one of these.
set -g __vek_words '@WORDS@'

function __vek_interfaces
    set -l names (vek devmg list 2>/dev/null | awk 'NR > 2 && NF > 1 { print $1 }')
    test -n "$names"; and printf '%s\n' $names; or ls /sys/class/net
end

function __vek_complete
    set -l given (commandline -opc)[2..]
    for line in (string split \n $__vek_words)
        set -l parts (string split '|' $line)
        set -l known (string split ' ' $parts[1])
        set -l common (math min (count $known), (count $given))
        if test $common -gt 0; and test "$known[1..$common]" != "$given[1..$common]"
            continue
        end
        if test (count $known) -gt (count $given)
            set -l next (math (count $given) + 1)
            echo $known[$next]
        else
            set -l behind (string split -- ' ' $parts[2])
            set -l next (math (count $given) - (count $known) + 1)
            set -l wanted $behind[$next]
            switch "$wanted"
                case '' -
                case @
                    __vek_interfaces
                case '*'
                    string split / $wanted
            end
        end
    end
end
complete -c vek -f -a '(__vek_complete)'
