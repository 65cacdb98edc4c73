FormatString('%1 %2 %x %10 %', 'a', StrToUpper('b')) + FormatStringA('%2', ['a', 'b']) + FormatStrStr('%s %s', 'x')
  + FindStr('aBc', 'b', false) + FindReplaceStr('aaa', 'a', 'aa') + StartsWithStr('prefix', 'pre') + StrToLower('\u0130');
print('a', 1, {}, null); perror('b'); LogVerbose(); LogError([1, [2]]); pause(); ASSERT(1); ASSERT_MSG(0, 'no');
GetOperatingSystemFamilyName() + GetOperatingSystemIdName() + GetOSMajorVersion() + GetOSMinorVersion()
  + GetPortIdName() + GetPortIdShortName();
