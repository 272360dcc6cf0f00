function area(w, h)
{
  if (w < 0)
  {
    return 0;
  }
  return w * h;
}

class Shape
{
  constructor(name)
  {
    this.name = name;
  }
}

var shape = function ()
{
  return new Shape("square");
};

while (busy())
{
  wait();
}

function wrap() {
  if (ready)
  {
    go();
  }
  stop();
}
end();
