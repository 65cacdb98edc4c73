var made = new FuzzObject(9), other = new FuzzObject();
made.level = '7'; made.steps = [1, 2.5, 'x']; made.labels = ['a', 5]; made.name = {};
other.IsSame(made); other.IsSame(null); [made.next, host.next, host.GetNext()].join();
host.Add(made.MAX) + host.Join('a', made.labels) + host.Twice(made.steps);
