# Prints the newest section of CHANGELOG.md as a Debian changelog entry. Needs the variables `maintainer` and `date`.

function flush_item(    word, line, i, count) {
  if (item == "") return
  count = split(item, word, " ")
  line = "  *"
  for (i = 1; i <= count; ++i) {
    if (length(line) + 1 + length(word[i]) > 79) {
      print line
      line = "   "
    }
    line = line " " word[i]
  }
  print line
  item = ""
}

/^## / {
  if (++sections > 1) exit
  print "svo-signin (" $2 ") stable; urgency=medium"
  print ""
  next
}
sections == 0 { next }
/^- / {
  flush_item()
  item = substr($0, 3)
  next
}
/^  / { item = item " " $0 }

END {
  flush_item()
  print ""
  print " -- " maintainer "  " date
}
