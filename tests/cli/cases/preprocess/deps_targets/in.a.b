text
