var f = new TextFile(), u = new URLFile();
f.Open('missing'); f.IsOpened(); f.Eof(); f.ReadLn(); f.ReadAll(); f.WriteLn('x'); f.Clear(); f.Close();
u.Open('file', 'missing', '', ''); u.IsOpened(); u.ReadLn(); u.ReadAll(); u.Close();
