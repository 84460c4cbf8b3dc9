complete -c vek-shell -s e -d 'Stop at the first command that fails'
complete -c vek-shell -s j -d 'Answer with JSON'
complete -c vek-shell -l trace -d 'Show orders'
complete -c vek-shell -l record -r -F -d 'Add orders to a file'
complete -c vek-shell -l replay -r -F -d 'Answer orders from a file'
complete -c vek-shell -l dump -r -F -d 'Show a recording'
complete -c vek-shell -l help -l version
